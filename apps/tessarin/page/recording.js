// The recording and what was found in it.

// Bytes of base64, which comes in several texts so that none is too long for a browser.
function decodeBase64(texts) {
    return texts.map((text) => {
        const characters = atob(text);
        const bytes = new Uint8Array(characters.length);
        for (let i = 0; i < bytes.length; ++i) {
            bytes[i] = characters.charCodeAt(i);
        }
        return bytes;
    });
}

function joined(parts) {
    const whole = new Uint8Array(parts.reduce((sum, part) => sum + part.length, 0));
    let next = 0;
    for (const part of parts) {
        whole.set(part, next);
        next += part.length;
    }
    return whole;
}

// A WAV file of 16 bits and one channel, with the plain header of 44 bytes.
class Recording {
    constructor(bytes) {
        const header = new DataView(bytes.buffer, 0, 44);
        this.blob = new Blob([bytes], { type: "audio/wav" });
        this.rate = header.getUint32(24, true);
        this.samples = new Int16Array(bytes.buffer, 44, (bytes.length - 44) >> 1);
        this.durationMs = (this.samples.length / this.rate) * 1000;
        this.levels = envelopeLevels(this.samples);
    }

    // The lowest and the highest sample from one time to another, as shares of full scale.
    range(fromMs, toMs) {
        const first = Math.max(0, Math.floor((fromMs / 1000) * this.rate));
        const last = Math.min(this.samples.length, Math.ceil((toMs / 1000) * this.rate));
        let level = this.levels[0];
        for (const each of this.levels) {
            level = each.step * 2 <= last - first ? each : level;
        }
        let low = 0;
        let high = 0;
        const end = Math.min(level.low.length, Math.ceil(last / level.step));
        for (let i = Math.floor(first / level.step); i < end; ++i) {
            low = Math.min(low, level.low[i]);
            high = Math.max(high, level.high[i]);
        }
        return [low / 32768, high / 32768];
    }
}

// The lowest and highest samples of steps that grow fourfold: a picture of any width reads few.
function envelopeLevels(samples) {
    const levels = [{ step: 1, low: samples, high: samples }];
    while (levels.at(-1).low.length > 4000) {
        const { step, low, high } = levels.at(-1);
        const count = Math.ceil(low.length / 4);
        const next = { step: step * 4, low: new Int16Array(count), high: new Int16Array(count) };
        for (let i = 0; i < count; ++i) {
            let least = 32767;
            let most = -32768;
            for (let k = 4 * i; k < Math.min(4 * i + 4, low.length); ++k) {
                least = Math.min(least, low[k]);
                most = Math.max(most, high[k]);
            }
            next.low[i] = least;
            next.high[i] = most;
        }
        levels.push(next);
    }
    return levels;
}

// The index of the last of `spans` that begins at or before a time, -1 when none does.
function lastBefore(spans, ms) {
    return firstAfter(spans, ms, ({ start_ms }) => start_ms) - 1;
}

// The index of the first of `items`, in order of their times, of which the time is after `ms`.
function firstAfter(items, ms, timeOf) {
    let low = 0;
    let high = items.length;
    while (low < high) {
        const middle = (low + high) >> 1;
        if (timeOf(items[middle]) <= ms) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    return low;
}

// The index of the span at a time, -1 between spans.
function indexAt(spans, ms) {
    const index = lastBefore(spans, ms);
    return index >= 0 && ms < spans[index].end_ms ? index : -1;
}

function placed(spans) {
    return (spans ?? []).filter((span) => span.start_ms >= 0 && span.end_ms >= span.start_ms)
        .sort((a, b) => a.start_ms - b.start_ms);
}

// What was found, in order of time. A span of the JSON that has no time was lost; it is not shown,
// but for words that were not heard, which the running text keeps.
class Findings {
    constructor(result) {
        this.result = result;
        this.words = placed(result.words);
        this.unsaid = (result.words ?? []).filter(({ said }) => said === false);
        this.phonemes = placed(result.phonemes);
        this.events = placed(result.events);
        this.frames = placed(result.frames);
        this.curves = result.curves ?? [];
    }

    frameIndexAt(ms) {
        return Math.max(0, Math.min(this.frames.length - 1, lastBefore(this.frames, ms)));
    }
}
