/** A file of the package: URLs by which others may stand in its place. */
export type FileName =
    "codeSimd" | "codePlain" | "model" | "calibration" | "hearingModel" | "trigrams" | "lexicon";

export type Use = "align" | "recognize" | "live";

export interface LoadOptions {
    /** Where files are, for those that are not beside the package. */
    files?: Partial<Record<FileName, string | URL>>;
    /** What to have ready when `load` resolves; the rest is read when it is first used. ["align"] */
    uses?: Use[];
    /** Words of your own and how they are said, as for `setWord`. */
    words?: Record<string, string>;
    /** Whether to take the code with 128-bit SIMD; by default, where there is such. */
    simd?: boolean;
}

export interface CallOptions {
    /** Ends the call, which then rejects with the signal's reason. */
    signal?: AbortSignal;
    /** Called now and then while a search goes on. */
    onProgress?(done: number, total: number): void;
}

/** How a text is read. */
export interface ScriptOptions {
    /** As it stands: numbers, names and stage directions are words. */
    literal?: boolean;
    /** The role whose lines are said; by default everybody's. */
    speaker?: string;
    scriptFormat?: "auto" | "plain" | "fountain" | "srt" | "vtt" | "textgrid";
    /** The times of subtitles divide the text. */
    cueTimes?: boolean;
    /** Entries on top of the built-in table. */
    scriptTable?: string;
}

export interface StretchOptions {
    /** The stretch that is searched, in milliseconds; times count from the beginning all the same. */
    fromMs?: number;
    toMs?: number;
}

export interface AlignOptions extends CallOptions, ScriptOptions, StretchOptions {
    /** 500 to 8000. [2000] */
    beamWidth?: number;
    /** Goes on after the text was lost. */
    retry?: boolean;
    /** Whether all of the text was said and nothing else. ["auto"] */
    match?: "auto" | "exact" | "loose";
}

export interface Phoneme {
    /** "x" is silence. */
    label: string;
    startMs: number;
    endMs: number;
    /** Strength of the sound, 0 to 100. */
    score: number;
    confidence?: number | null;
}

/** `offset` and `length` are a place in the string that was given. */
export interface Span {
    text: string;
    startMs: number;
    endMs: number;
    offset: number;
    length: number;
}

export interface Word extends Span {
    emphasised: boolean;
    drawnOut: boolean;
    confidence: number | null;
}

export interface Event extends Span {
    kind: "tag" | "cut" | "punctuation" | "unscripted" | "speaker" | "direction" | "action" |
        "heading";
}

export interface Match {
    verdict: "unknown" | "good" | "doubtful" | "poor";
    score: number | null;
    isLoose: boolean;
    unscriptedMs: number;
    margin: number;
    fit: number;
    duration: number | null;
    spread: number;
}

export interface Result {
    phonemes: Phoneme[];
    words: Word[];
    events: Event[];
    unsaid: { text: string; offset: number; length: number; confidence: number | null }[];
    match: Match | null;
    /** Of each 10 ms, in dB of full scale, -100 to 0. */
    loudness: Float32Array;
}

export interface Token {
    text: string;
    kind: string;
    offset: number;
    length: number;
    /** Of each stretch of the token, the preferred one first. */
    pronunciations: string[][];
    cutMs: number | null;
}

/** A part of the mouth, and how far it leaves rest: 1 is as it is spoken; 0 to 4. */
export type Strength = number | Partial<Record<"vowels" | "consonants" | "lips" | "teeth", number>>;

/** "visemes" (fifteen), "arkit" (52), "vrm" (five), "switches", "preston-blair", or the text of a map
    of your own. */
export type ShapeSet = string;

export interface TrackOptions {
    signal?: AbortSignal;
    shapes?: ShapeSet;
    /** Frames a second, 1 to 1000. [30] */
    fps?: number;
    smooth?: boolean;
    slope?: number;
    maxWeights?: number;
    gains?: Record<string, number>;
    strength?: Strength;
    plain?: boolean;
    /** Articulation rules. */
    rules?: string;
    curves?: boolean;
    commonKeys?: boolean;
}

export interface ShapeNames {
    set: string;
    names: string[];
    /** Which are shapes of closed lips. */
    closed: boolean[];
    /** The number of the shape of a resting mouth. */
    rest: number;
}

export interface Track {
    shapes: ShapeNames;
    startMs: Int32Array;
    endMs: Int32Array;
    /** A row for each frame, with a weight for each shape. */
    weights: Float32Array;
    /** The weights of phonemes that those of shapes are made from. */
    frames: { startMs: number; endMs: number; weights: Record<string, number> }[];
    curves?: {
        label: string; startMs: number; endMs: number; keys: { timeMs: number; weight: number }[];
    }[];
}

/** Times are seconds of the audio context, or since the first sample that was pushed. */
export interface LiveOptions {
    /** What to listen to. Without one, samples come by `push`. */
    node?: AudioNode;
    /** Samples a second of what is pushed, 4000 to 50000. [16000] */
    rate?: number;
    shapes?: ShapeSet;
    fps?: number;
    /** How long a sound is weighed before it is final, 20 to 10000. [25] */
    delayMs?: number;
    overlapMs?: number;
    /** How far ahead of a sound the mouth prepares for it, 0 to 120, for which frames wait. [20] */
    lookAheadMs?: number;
    strength?: Strength;
    /** The weights stay as they are; they belong to the callback. */
    onFrame?(frame: { start: number; end: number; weights: Float32Array }): void;
    onPhoneme?(phoneme: { label: string; start: number; end: number; score: number }): void;
    /** Samples were lost, since the worker had not taken those before; `total` since the beginning. */
    onLost?(samples: number, total: number): void;
    onError?(error: Error): void;
}

export interface Live {
    readonly shapes: ShapeNames;
    /** The weights for `time`, and the time that they are for: `time`, or the end of what is known.
        The same object each time, for requestAnimationFrame; null before the first frame. */
    weights(time?: number): { time: number; weights: Float32Array } | null;
    readonly lost: number;
    /** How long before it came the newest frame ended, in milliseconds; NaN without a node. */
    readonly delayMs: number;
    /** Hears the next samples; resolves when they are heard. */
    push(samples: Float32Array): Promise<void>;
    /** The bytes of memory that the worker holds. */
    memory(): Promise<number>;
    /** Ends the audio; resolves when all frames have come. */
    finish(): Promise<void>;
    close(): void;
}

export class Engine {
    private constructor();
    static load(options?: LoadOptions): Promise<Engine>;

    /** Finds when each phoneme and word of `text` was spoken. `samples` are one channel, from -1 to
        1, of `rate` samples a second. */
    align(samples: Float32Array, rate: number, text: string, options?: AlignOptions):
        Promise<Result>;
    /** Hears the phonemes without a text. */
    recognize(samples: Float32Array, rate: number, options?: CallOptions & StretchOptions):
        Promise<Result>;
    /** The mouth of a result, or of timings from elsewhere. */
    track(result: { phonemes: Phoneme[]; loudness?: ArrayLike<number> }, options?: TrackOptions):
        Promise<Track>;
    /** How a text is said. */
    transcribe(text: string, options?: ScriptOptions & { signal?: AbortSignal }): Promise<Token[]>;
    /** Has a word said as `phonemes`, alternatives separated by bars. */
    setWord(word: string, phonemes: string): Promise<void>;
    /** Follows audio that is still coming in, in a worker of its own. */
    live(options?: LiveOptions): Promise<Live>;
    /** The bytes of memory that the worker of searches holds. */
    memory(): Promise<number>;
    /** Ends all calls and live audio, and gives their memory back. */
    close(): void;
}

export class TessarinError extends Error {
    /** Of enum tessarin_code in tessarin_c.h. */
    readonly code: number;
    /** What was found before a search lost its text. */
    readonly result?: Result;
}

/** The weights of a track at a time, straight between the middles of frames. */
export function weightsAt(track: Track, ms: number, out?: Float32Array): Float32Array;
