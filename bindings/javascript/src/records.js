// The structs of the C interface as a 32-bit module lays them out: members in their order, each at
// a multiple of its alignment.

const scalar = (size, get, set) => ({
    size, align: size,
    read: (memory, at) => memory.view[get](at, true),
    write: (memory, at, value) => memory.view[set](at, value, true),
});

export const i32 = scalar(4, "getInt32", "setInt32");
export const u32 = scalar(4, "getUint32", "setUint32");
export const f32 = scalar(4, "getFloat32", "setFloat32");
export const f64 = scalar(8, "getFloat64", "setFloat64");

/** Milliseconds since audio began: beyond what a double holds after 285000 years. */
export const i64 = {
    size: 8, align: 8,
    read: (memory, at) => Number(memory.view.getBigInt64(at, true)),
    write: (memory, at, value) => memory.view.setBigInt64(at, BigInt(value), true),
};

/** A zero-terminated text in place, of at most `size` bytes. */
export const chars = (size) => ({
    size, align: 1,
    read: (memory, at) => memory.textAt(at, size),
    write: (memory, at, value) => {
        const bytes = new TextEncoder().encode(value).subarray(0, size - 1);
        memory.bytesAt(at, size).fill(0).set(bytes);
    },
});

/** A pointer to a zero-terminated text. */
export const text = {
    size: 4, align: 4,
    read: (memory, at) => memory.textAt(memory.view.getUint32(at, true)),
};

export const array = (type, count) => ({
    size: type.size * count, align: type.align,
    read: (memory, at) =>
        Array.from({ length: count }, (_, i) => type.read(memory, at + i * type.size)),
});

const upTo = (value, step) => Math.ceil(value / step) * step;

export function record(members) {
    const places = [];
    let end = 0;
    let align = 1;
    for (const [name, type] of Object.entries(members)) {
        const at = upTo(end, type.align);
        places.push([name, type, at]);
        end = at + type.size;
        align = Math.max(align, type.align);
    }
    return {
        size: upTo(end, align), align,
        read(memory, at) {
            const out = {};
            for (const [name, type, offset] of places) {
                out[name] = type.read(memory, at + offset);
            }
            return out;
        },
        /** What `values` does not name stays. */
        write(memory, at, values) {
            for (const [name, type, offset] of places) {
                if (values[name] !== undefined) {
                    type.write(memory, at + offset, values[name]);
                }
            }
        },
    };
}

export const PHONEME = record({ startMs: i32, endMs: i32, score: f32, label: chars(8) });
export const SPAN = record({
    kind: i32, startMs: i32, endMs: i32, offset: i32, length: i32, text,
});
export const MATCH = record({
    verdict: i32, score: f32, isLoose: i32, unscriptedMs: i32, margin: f32, fit: f32, duration: f32,
    spread: f32,
});
export const WORD_MATCH = record({ isSaid: i32, index: u32, confidence: f32, margin: f32 });
export const WEIGHT = record({ label: chars(4), weight: f32 });
export const FRAME = record({ startMs: i32, endMs: i32, count: i32, weights: array(WEIGHT, 10) });
export const KEY = record({ timeMs: i32, weight: f32 });
export const CURVE = record({
    label: chars(8), startMs: i32, endMs: i32, keyCount: u32, keys: u32,
});
export const TOKEN = record({ kind: i32, offset: i32, length: i32, cutMs: i32, text, phonemes: text });
export const LIVE_PHONEME = record({ startMs: i64, endMs: i64, score: f32, label: chars(8) });
export const LIVE_FRAME = record({ startMs: i64, endMs: i64, count: i32, weights: array(WEIGHT, 10) });
export const LIVE_STRETCH = record({
    startMs: i64, endMs: i64, waitingMs: i64, phonemes: u32, frames: u32, phonemeCount: u32,
    frameCount: u32,
});

export const SCRIPT_OPTIONS = record({
    size: u32, flags: u32, format: u32, speaker: u32, table: u32,
});
export const SEARCH_OPTIONS = record({
    size: u32, beamWidth: i32, fromMs: i32, toMs: i32, flags: u32, matchMode: u32, script: u32,
});
export const GAIN = record({ phonemes: u32, factor: f32 });
export const STRENGTH = record({ parts: u32, factor: f32 });
export const TRACK_OPTIONS = record({
    size: u32, flags: u32, frameRate: f32, slope: f32, maxWeights: i32, rulesLength: i32, rules: u32,
    gains: u32, gainCount: u32, strengths: u32, strengthCount: u32,
});
export const LIVE_OPTIONS = record({
    size: u32, rateHz: u32, format: u32, channels: u32, delayMs: i32, overlapMs: i32, frameRate: f32,
    lookAheadMs: i32, strengthCount: u32, strengths: u32,
});
