#!/bin/bash
# Runs align.sbatch on a Slurm cluster of this machine alone: test.sh TOOL LIST. Exits with 77 where
# something that it needs is missing.
set -euo pipefail
tool=$(realpath "$1")
list=$(realpath "$2")
here=$(dirname "$(realpath "$0")")
for command in slurmctld slurmd munged sbatch; do
    command -v "$command" >/dev/null || { echo "skipped: no $command; ./dev cluster-test installs it" >&2; exit 77; }
done
[ "$(id -u)" -eq 0 ] || { echo "skipped: a Slurm daemon needs root" >&2; exit 77; }

work=$(mktemp -d)
daemons=()
stop() {
    for daemon in "${daemons[@]}"; do
        kill "$daemon" 2>/dev/null || true
    done
    for daemon in "${daemons[@]}"; do
        wait "$daemon" 2>/dev/null || true
    done
    rm -rf "$work"
}
trap stop EXIT

# A munge of its own, so that one that the machine has is left alone.
dd if=/dev/urandom of="$work/munge.key" bs=1 count=1024 status=none
chmod 600 "$work/munge.key"
mkdir -p "$work/munge" "$work/state" "$work/spool"
chmod 755 "$work" "$work/munge"
munged --foreground --force --key-file="$work/munge.key" --socket="$work/munge/socket" \
    --pid-file="$work/munge/pid" --log-file="$work/munge/log" --seed-file="$work/munge/seed" \
    >/dev/null 2>&1 &
daemons+=($!)

port=$((20000 + $$ % 20000))
host=$(hostname -s)
cat >"$work/slurm.conf" <<CONF
ClusterName=example
SlurmctldHost=$host(127.0.0.1)
SlurmctldPort=$port
SlurmdPort=$((port + 1))
SlurmUser=root
AuthType=auth/munge
AuthInfo=socket=$work/munge/socket
CredType=cred/munge
MpiDefault=none
ProctrackType=proctrack/pgid
TaskPlugin=task/none
ReturnToService=2
SelectType=select/cons_tres
SelectTypeParameters=CR_Core
StateSaveLocation=$work/state
SlurmdSpoolDir=$work/spool
SlurmctldPidFile=$work/slurmctld.pid
SlurmdPidFile=$work/slurmd.pid
SlurmctldLogFile=$work/slurmctld.log
SlurmdLogFile=$work/slurmd.log
KillWait=10
MinJobAge=300
NodeName=$host NodeAddr=127.0.0.1 CPUs=$(nproc) State=UNKNOWN
PartitionName=all Nodes=$host Default=YES MaxTime=INFINITE State=UP OverSubscribe=FORCE:4
CONF
export SLURM_CONF=$work/slurm.conf
slurmctld -D >/dev/null 2>&1 &
daemons+=($!)
slurmd -D >/dev/null 2>&1 &
daemons+=($!)
for ((i = 0; i < 300; ++i)); do
    sinfo --noheader --format=%t 2>/dev/null | grep -q idle && break
    sleep 0.1
done
sinfo --noheader --format=%t | grep -q idle || { tail "$work"/*.log >&2; exit 1; }

export TESSARIN=$tool
submit() { # sbatch's own options
    sbatch --parsable --chdir="$work" --output="$work/task-%a.log" "$@" \
        "$here/align.sbatch" "$list" "$work/results"
}
expect() { # what, whether
    [ "$2" = yes ] || { echo "failed: $1" >&2; cat "$work"/task-*.log >&2; exit 1; }
    echo "ok: $1"
}

code=0
"$tool" batch "$list" --out "$work/plain" --quiet 2>/dev/null || code=$?

# One task is cancelled in the middle.
job=$(submit --array=1-3)
for ((i = 0; i < 600; ++i)); do
    grep -qs . "$work/results/journal-2-of-3.jsonl" && break
    sleep 0.05
done
scancel --signal=TERM --full "${job}_2" 2>/dev/null || true
while squeue --noheader --jobs="$job" 2>/dev/null | grep -q .; do
    sleep 0.2
done
# Sent again, all go on where they were.
submit --wait --array=1-3 >/dev/null
merged=0
"$tool" batch --merge "$work/results" 2>/dev/null || merged=$?
expect "the shards end as the whole does, with $code" "$([ "$merged" = "$code" ] && echo yes)"
expect "three tasks have made what one process makes" \
    "$(diff -rq --exclude='journal*' --exclude='*-of-3.*' "$work/plain" "$work/results" >&2 && echo yes)"
