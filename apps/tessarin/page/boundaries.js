// Boundaries between sounds, which the user may move. Words and events that begin or end there move
// along. The frames follow by stretching time, until `animate` makes the mouth of the new times.

const LEAST_SOUND_MS = 10; // the step of the search

class Boundaries {
    constructor(findings) {
        this.findings = findings;
        this.found = { frames: findings.frames, curves: findings.curves };
        const { phonemes, words, events } = findings;
        const times = phonemes.flatMap(({ start_ms, end_ms }) => [start_ms, end_ms]);
        this.times = [...new Set(times)].sort((a, b) => a - b);
        this.foundTimes = [...this.times];
        const indexOf = new Map(this.times.map((ms, i) => [ms, i]));
        this.edges = this.times.map(() => []);
        for (const span of [...phonemes, ...words, ...events]) {
            for (const end of ["start_ms", "end_ms"]) {
                this.edges[indexOf.get(span[end])]?.push({ span, end });
            }
        }
        this.wordEdges = new Set(words.flatMap(({ start_ms, end_ms }) =>
            [indexOf.get(start_ms), indexOf.get(end_ms)]));
        this.past = [];
    }

    get count() {
        return this.times.filter((ms, i) => ms !== this.foundTimes[i]).length;
    }

    // The boundary within `reachMs` of a time, -1 when there is none or when those beside it are so
    // near that it could not be told which is meant. The ends of the recording stay where they are.
    nearest(ms, reachMs, isOfWord) {
        const { times } = this;
        let best = -1;
        for (let i = Math.max(1, this.firstAfter(ms - reachMs)); i < times.length - 1; ++i) {
            if (times[i] > ms + reachMs) {
                break;
            }
            const isFree = Math.min(times[i] - times[i - 1], times[i + 1] - times[i]) > 2 * reachMs;
            if (isFree && (!isOfWord || this.wordEdges.has(i))) {
                best = i;
            }
        }
        return best;
    }

    // The boundary at exactly this time.
    at(ms) {
        return this.times.indexOf(ms);
    }

    // Begins to move a boundary, which one `undo` takes back as a whole.
    begin(index) {
        this.past.push([index, this.times[index]]);
    }

    // Moves a boundary as far as the sounds beside it allow. The frames wait for `end`.
    move(index, ms) {
        const { times } = this;
        const low = Math.min(times[index], times[index - 1] + LEAST_SOUND_MS);
        const high = Math.max(times[index], times[index + 1] - LEAST_SOUND_MS);
        this.put(index, clamp(Math.round(ms), low, high));
    }

    put(index, ms) {
        this.times[index] = ms;
        for (const { span, end } of this.edges[index]) {
            span[end] = ms;
        }
    }

    end() {
        const { frames, curves } = this.found;
        const isMoved = this.count > 0;
        this.findings.frames = frames.map((frame) => {
            const ms = this.foundTimeOf(centreOf(frame));
            return ms === centreOf(frame) ? frame
                : { ...frame, weights: roundedWeights(Object.entries(weightsAt(frames, ms))) };
        });
        this.findings.curves = isMoved ? [] : curves;
    }

    undo() {
        const last = this.past.pop();
        if (last) {
            this.put(...last);
            this.end();
        }
    }

    // The time at which the recording was found to be as it is now said to be at `ms`.
    foundTimeOf(ms) {
        const { times, foundTimes } = this;
        const next = clamp(this.firstAfter(ms), 1, times.length - 1);
        if (times[next - 1] === foundTimes[next - 1] && times[next] === foundTimes[next]) {
            return ms;
        }
        const share = (ms - times[next - 1]) / (times[next] - times[next - 1]);
        return foundTimes[next - 1] + share * (foundTimes[next] - foundTimes[next - 1]);
    }

    firstAfter(ms) {
        return firstAfter(this.times, ms, (time) => time);
    }
}
