// Options of the calls, as people write them and as the C interface takes them.

import { GAIN, SCRIPT_OPTIONS, SEARCH_OPTIONS, STRENGTH, TRACK_OPTIONS, LIVE_OPTIONS } from
    "./records.js";

const MATCH_MODES = ["auto", "exact", "loose"];
const SCRIPT_FORMATS = ["auto", "plain", "fountain", "srt", "vtt", "textgrid"];
const PARTS = { vowels: 1, consonants: 2, lips: 4, teeth: 8 };

function numberOf(value, name, among) {
    const number = among.indexOf(value);
    if (number < 0) {
        throw new RangeError(`${name} is one of ${among.join(", ")}; not ${value}`);
    }
    return number;
}

/** Refuses what is misspelled, which would otherwise do nothing. */
function known(options, names, call) {
    for (const name of Object.keys(options)) {
        if (!names.includes(name)) {
            throw new TypeError(`${call} has no option ${name}; there are ${names.join(", ")}`);
        }
    }
}

const SCRIPT = ["literal", "speaker", "scriptFormat", "cueTimes", "scriptTable"];

export function scriptOptions(place, options = {}) {
    return place.record(SCRIPT_OPTIONS, {
        size: 0,
        flags: (options.literal ? 1 : 0) | (options.cueTimes ? 2 : 0),
        format: numberOf(options.scriptFormat ?? "auto", "scriptFormat", SCRIPT_FORMATS),
        speaker: place.text(options.speaker),
        table: place.text(options.scriptTable),
    });
}

export function checkTranscribe(options) {
    known(options, SCRIPT, "transcribe");
}

export function searchOptions(place, options = {}, isAlignment) {
    known(options, ["fromMs", "toMs",
        ...(isAlignment ? ["beamWidth", "retry", "match", ...SCRIPT] : [])],
        isAlignment ? "align" : "recognize");
    const { fromMs = 0, toMs = 0 } = options;
    if (options.toMs !== undefined && toMs <= fromMs) {
        throw new RangeError("toMs is after fromMs");
    }
    return place.record(SEARCH_OPTIONS, {
        size: 0, beamWidth: options.beamWidth ?? 0, fromMs, toMs, flags: options.retry ? 1 : 0,
        matchMode: numberOf(options.match ?? "auto", "match", MATCH_MODES),
        script: scriptOptions(place, options),
    });
}

function strengths(place, strength = 1) {
    const parts = typeof strength === "number" ? { vowels: strength, consonants: strength } : strength;
    known(parts, Object.keys(PARTS), "strength");
    const all = Object.entries(parts).map(([part, factor]) => ({ parts: PARTS[part], factor }));
    return { strengths: place.array(STRENGTH, all), strengthCount: all.length };
}

export function trackOptions(place, options = {}) {
    known(options, ["fps", "shapes", "smooth", "slope", "maxWeights", "gains", "strength", "plain",
        "rules", "curves", "commonKeys"], "track");
    const gains = Object.entries(options.gains ?? {})
        .map(([phonemes, factor]) => ({ phonemes: place.text(phonemes), factor }));
    const rules = options.rules === undefined ? null : new TextEncoder().encode(options.rules);
    return place.record(TRACK_OPTIONS, {
        size: 0,
        flags: (options.smooth ? 1 : 0) | (options.commonKeys ? 2 : 0) |
            (options.curves || options.commonKeys ? 256 : 0) | (options.plain ? 512 : 0),
        frameRate: options.fps ?? 0, slope: options.slope ?? 0, maxWeights: options.maxWeights ?? 0,
        rulesLength: rules?.length ?? 0, rules: rules ? place.bytes(rules) : 0,
        gains: place.array(GAIN, gains), gainCount: gains.length,
        ...strengths(place, options.strength),
    });
}

export function liveOptions(place, options) {
    known(options, ["rate", "shapes", "fps", "delayMs", "overlapMs", "lookAheadMs", "strength"],
        "live");
    const kFloat = 2;
    return place.record(LIVE_OPTIONS, {
        size: 0, rateHz: options.rate ?? 0, format: kFloat, channels: 1,
        delayMs: options.delayMs ?? 0, overlapMs: options.overlapMs ?? 0,
        frameRate: options.fps ?? 0,
        lookAheadMs: options.lookAheadMs === undefined ? 0 : options.lookAheadMs || -1,
        ...strengths(place, options.strength),
    });
}
