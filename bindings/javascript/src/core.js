// The engine in the thread where it works: what the calls of the package do with the C interface.

import { RECOGNITION_FAILED } from "./errors.js";
import { Module } from "./module.js";
import { checkTranscribe, scriptOptions, searchOptions, trackOptions } from "./options.js";
import {
    CURVE, f32, FRAME, KEY, MATCH, PHONEME, SPAN, TOKEN, WORD_MATCH,
} from "./records.js";
import { Shapes } from "./shapes.js";

const KINDS = [, "word", "tag", "cut", "punctuation", "unscripted", "speaker", "direction", "action",
    "heading"];
const VERDICTS = ["unknown", "good", "doubtful", "poor"];
const MOST_SAMPLES = 2 ** 30;

const orNull = (number) => number >= 0 ? number : null;

/** From bytes of a text in UTF-8 to the places of a JavaScript string. */
function textPlaces(text) {
    if (text.includes("\0")) {
        throw new RangeError("the text has a zero character");
    }
    const places = new Uint32Array(new TextEncoder().encode(text).length + 1);
    let byte = 0;
    let place = 0;
    for (const character of text) {
        const code = character.codePointAt(0);
        const size = code < 0x80 ? 1 : code < 0x800 ? 2 : code < 0x10000 ? 3 : 4;
        places.fill(place, byte, byte + size);
        byte += size;
        place += character.length;
    }
    places[byte] = place;
    return (offset, length) =>
        ({ offset: places[offset], length: places[offset + length] - places[offset] });
}

export class Core {
    /** `read(name)` gives the bytes of one of the package's files, plain. */
    static async load(read) {
        const self = new Core();
        self.#read = read;
        self.module = await Module.load(await read("code"));
        return self;
    }

    #read;
    #made = new Map();

    /** What is made once, when it is first needed. */
    #once(name, make) {
        if (!this.#made.has(name)) {
            this.#made.set(name, make());
            this.#made.get(name).catch(() => this.#made.delete(name));
        }
        return this.#made.get(name);
    }

    async #createFrom(name, file) {
        const bytes = await this.#read(file);
        return this.module.scratch((place) =>
            this.module.create(file, name, place.bytes(bytes), bytes.length));
    }

    #setFrom(name, bytes, file, model, ...more) {
        const code = this.module.scratch((place) =>
            this.module.call(name, model, place.bytes(bytes), bytes.length, ...more));
        if (code !== 0) {
            throw this.module.fail(code, file);
        }
    }

    modelForText() {
        return this.#once("model", async () => {
            const model = await this.#createFrom("model_from_memory", "model");
            this.#setFrom("set_model_calibration", await this.#read("calibration"), "calibration",
                model);
            return model;
        });
    }

    modelForHearing() {
        return this.#once("hearing", async () => {
            const model = await this.#createFrom("model_from_memory", "hearingModel");
            this.#setFrom("set_model_statistics", await this.#read("trigrams"), "trigrams", model, 1);
            return model;
        });
    }

    language() {
        return this.#once("language", () => this.#createFrom("language_from_memory", "lexicon"));
    }

    /** Has what `uses` names ready. */
    async prepare(uses) {
        const needs = {
            align: () => Promise.all([this.modelForText(), this.language()]),
            recognize: () => this.modelForHearing(),
            live: () => this.modelForHearing(),
        };
        for (const use of uses) {
            if (!(use in needs)) {
                throw new RangeError(`${use} is not one of ${Object.keys(needs).join(", ")}`);
            }
            await needs[use]();
        }
    }

    async setWord(word, phonemes) {
        const language = await this.language();
        const code = this.module.scratch((place) =>
            this.module.call("set_word", language, place.text(word), place.text(phonemes)));
        if (code !== 0) {
            throw this.module.fail(code, `${word}=${phonemes}`);
        }
    }

    async align(samples, rate, text, options, onProgress) {
        const [model, language] = [await this.modelForText(), await this.language()];
        const places = textPlaces(text);
        return this.#search(samples, rate, places, onProgress, (place, audio, progress) =>
            this.module.tryCreate("alignment", model, language, audio, place.text(text),
                searchOptions(place, options, true), progress));
    }

    async recognize(samples, rate, options, onProgress) {
        const model = await this.modelForHearing();
        return this.#search(samples, rate, null, onProgress, (place, audio, progress) =>
            this.module.tryCreate("recognition", model, audio, searchOptions(place, options, false),
                progress));
    }

    #search(samples, rate, places, onProgress, start) {
        const { module } = this;
        if (samples.length > MOST_SAMPLES) {
            throw new RangeError("there are more than 2^30 samples");
        }
        const audio = module.scratch((place) => module.create("audio", "audio_from_float",
            place.floats(samples), samples.length, rate));
        let found;
        try {
            module.onProgress = onProgress;
            found = module.scratch((place) =>
                start(place, audio, module.call("js_get_progress")));
        } finally {
            module.onProgress = null;
            module.call("free_audio", audio);
        }
        const { code, handle } = found;
        try {
            const result = handle !== 0 ? this.#readResult(handle, places) : undefined;
            if (code !== 0) {
                const error = module.fail(code, places ? "align" : "recognize");
                error.result = code === RECOGNITION_FAILED ? result : undefined;
                throw error;
            }
            return result;
        } finally {
            module.call("free_result", handle);
        }
    }

    #readResult(handle, places) {
        const { module } = this;
        const span = ({ text, startMs, endMs, offset, length }) =>
            ({ text, startMs, endMs, ...(places ? places(offset, length) : { offset, length }) });
        const confidences = module.items(f32, "phoneme_confidences", handle);
        const ofWord = { said: new Map(), unsaid: new Map() };
        for (const each of module.items(WORD_MATCH, "word_matches", handle)) {
            ofWord[each.isSaid ? "said" : "unsaid"].set(each.index, orNull(each.confidence));
        }
        const matchAt = module.call("get_match", handle);
        const match = matchAt === 0 ? null : MATCH.read(module, matchAt);
        return {
            phonemes: module.items(PHONEME, "phonemes", handle).map((each, i) =>
                ({ ...each, confidence: orNull(confidences[i] ?? -1) })),
            words: module.items(SPAN, "words", handle).map((each, i) => {
                const flags = module.call("get_word_flags", handle, i);
                return {
                    ...span(each), emphasised: (flags & 1) !== 0, drawnOut: (flags & 2) !== 0,
                    confidence: ofWord.said.get(i) ?? null,
                };
            }),
            events: module.items(SPAN, "events", handle).map((each) =>
                ({ ...span(each), kind: KINDS[each.kind] ?? "tag" })),
            unsaid: module.items(SPAN, "unsaid_words", handle).map((each, i) => {
                const { text, offset, length } = span(each);
                return { text, offset, length, confidence: ofWord.unsaid.get(i) ?? null };
            }),
            match: match && {
                ...match, verdict: VERDICTS[match.verdict], score: orNull(match.score),
                isLoose: match.isLoose !== 0, duration: orNull(match.duration),
            },
            loudness: Float32Array.from(module.items(f32, "loudness", handle)),
        };
    }

    async transcribe(text, options = {}) {
        checkTranscribe(options);
        const { module } = this;
        const language = await this.language();
        const places = textPlaces(text);
        const handle = module.scratch((place) => module.create("transcribe", "script_transcript",
            language, place.text(text), scriptOptions(place, options)));
        try {
            return module.items(TOKEN, "transcript_tokens", handle).map((each) => ({
                text: each.text, kind: KINDS[each.kind] ?? "tag", ...places(each.offset, each.length),
                pronunciations: each.phonemes.split(" ").filter(Boolean).map((all) => all.split("|")),
                cutMs: each.kind === KINDS.indexOf("cut") ? each.cutMs : null,
            }));
        } finally {
            module.call("free_transcript", handle);
        }
    }

    /** The mouth of what align or recognize found, or of timings from elsewhere. */
    track({ phonemes, loudness = [] }, options = {}) {
        const { module } = this;
        const shapes = new Shapes(module, options.shapes ?? "visemes");
        let result = 0;
        let track = 0;
        try {
            result = this.#resultOf(phonemes, loudness);
            track = module.scratch((place) =>
                module.create("track", "track", result, trackOptions(place, options)));
            const { at, count } = module.scratch((place) => {
                const countAt = place.room(4);
                const frames = module.call("get_track_frames", track, countAt) >>> 0;
                return { at: frames, count: frames ? module.view.getUint32(countAt, true) : 0 };
            });
            const frames = module.array(FRAME, at, count);
            return {
                shapes: shapes.describe(),
                startMs: Int32Array.from(frames, ({ startMs }) => startMs),
                endMs: Int32Array.from(frames, ({ endMs }) => endMs),
                weights: shapes.mix(at, count),
                frames: frames.map(({ startMs, endMs, count: used, weights }) => ({
                    startMs, endMs, weights: Object.fromEntries(weights.slice(0, used)
                        .map(({ label, weight }) => [label, weight])),
                })),
                ...(options.curves || options.commonKeys ? { curves: this.#curves(track) } : {}),
            };
        } finally {
            module.call("free_track", track);
            module.call("free_result", result);
            shapes.free();
        }
    }

    #curves(track) {
        return this.module.items(CURVE, "curves", track).map(({ keys, keyCount, ...curve }) =>
            ({ ...curve, keys: this.module.array(KEY, keys, keyCount) }));
    }

    #resultOf(phonemes, loudness) {
        const { module } = this;
        return module.scratch((place) => {
            const all = place.array(PHONEME, phonemes);
            const result = module.create("track", "result_from_phonemes", all, phonemes.length);
            const values = Float32Array.from(loudness);
            const code = module.call("set_loudness", result, place.floats(values), values.length);
            if (code !== 0) {
                module.call("free_result", result);
                throw module.fail(code, "loudness");
            }
            return result;
        });
    }
}
