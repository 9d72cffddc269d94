#!/usr/bin/env python3
"""Runs align.py on two local workers, one of which is killed in the middle: test.py LIST. What comes
out must be what the package makes of each line by itself. Exits with 77 without Dask."""

import os
import pathlib
import signal
import sys

try:
    import distributed
except ImportError:
    print("skipped: no python3-distributed; ./dev cluster-test installs it", file=sys.stderr)
    sys.exit(77)
import align as example


def main() -> int:
    lines = example.read_list(pathlib.Path(sys.argv[1]))
    expected = {line["audio"]: example.align(line) for line in lines}
    with distributed.LocalCluster(n_workers=2, threads_per_worker=1, processes=True,
                                  dashboard_address=None) as cluster, \
            distributed.Client(cluster) as client:
        victim = next(iter(client.run(os.getpid).values()))
        found = {}
        for result in example.results_as_they_come(client, lines):
            if len(found) == len(lines) // 4:
                os.kill(victim, signal.SIGKILL)
            assert result["audio"] not in found, f"{result['audio']} came twice"
            found[result["audio"]] = result
        others = set(client.run(os.getpid).values())
    assert victim not in others, "the worker was not killed"
    assert found == expected, "the results are not those of single calls"
    print(f"ok: {len(found)} lines, with a worker that was killed")
    return 0


if __name__ == "__main__":
    sys.exit(main())
