// The engine as programs hold it: calls go to a worker, one at a time; live audio has a worker of
// its own, so that neither waits for the other.

import { TessarinError, unpackError } from "./errors.js";
import { FILES } from "./files.js";
import { Live } from "./live.js";
import { startThread } from "./thread.js";

const CANCELLED = 5;

/** A worker whose calls are answered. */
class Caller {
    static async start(onEvent) {
        const self = new Caller();
        self.#thread = await startThread(
            (message) => self.#hear(message, onEvent), (error) => self.#fail(error));
        return self;
    }

    #thread;
    #nextId = 1;
    #waiting = new Map();
    isDead = false;

    call(call, args = {}, transfer = [], onProgress = undefined) {
        if (this.isDead) {
            return Promise.reject(new Error("the worker has ended"));
        }
        return new Promise((resolve, reject) => {
            const id = this.#nextId++;
            this.#waiting.set(id, { resolve, reject, onProgress });
            this.#thread.hold(true);
            this.#thread.post({ id, call, args }, transfer);
        });
    }

    #hear(message, onEvent) {
        const { id, progress, error, result } = message;
        const waiting = this.#waiting.get(id);
        if (id === undefined) {
            onEvent?.(message);
        } else if (progress) {
            waiting?.onProgress?.(...progress);
        } else if (waiting) {
            this.#waiting.delete(id);
            this.#thread.hold(this.#waiting.size > 0);
            if (error) {
                waiting.reject(unpackError(error));
            } else {
                waiting.resolve(result);
            }
        }
    }

    #fail(error) {
        this.end(error);
    }

    end(reason) {
        this.isDead = true;
        this.#thread.terminate();
        for (const { reject } of this.#waiting.values()) {
            reject(reason);
        }
        this.#waiting.clear();
    }
}

/** The samples of one channel as the worker receives them: a copy, unless they may be given away. */
function ownSamples(samples) {
    if (!(samples instanceof Float32Array)) {
        throw new TypeError("samples are a Float32Array of one channel, from -1 to 1");
    }
    return samples.slice();
}

export class Engine {
    static async load({ files = {}, uses = ["align"], words = {}, simd = undefined } = {}) {
        for (const name of Object.keys(files)) {
            if (!(name in FILES)) {
                throw new TypeError(`${name} is not one of ${Object.keys(FILES).join(", ")}`);
            }
        }
        const urls = Object.fromEntries(
            Object.entries(files).map(([name, url]) => [name, String(url)]));
        const self = new Engine({ urls, words: Object.entries(words), simd }, uses);
        await self.#enqueue("prepare", { uses });
        return self;
    }

    #settings;
    #uses;
    #caller = null; // a promise
    #queue = Promise.resolve();
    #lives = new Set();
    #isClosed = false;

    constructor(settings, uses) {
        this.#settings = settings;
        this.#uses = uses;
    }

    align(samples, rate, text, { signal, onProgress, ...options } = {}) {
        return this.#search("align", { samples, rate, text, options }, signal, onProgress);
    }

    recognize(samples, rate, { signal, onProgress, ...options } = {}) {
        return this.#search("recognize", { samples, rate, options }, signal, onProgress);
    }

    async #search(call, args, signal, onProgress) {
        const samples = ownSamples(args.samples);
        return this.#enqueue(call, { ...args, samples }, { signal, onProgress,
            transfer: [samples.buffer] });
    }

    transcribe(text, { signal, ...options } = {}) {
        return this.#enqueue("transcribe", { text, options }, { signal });
    }

    track({ phonemes, loudness }, { signal, ...options } = {}) {
        return this.#enqueue("track", { result: { phonemes, loudness }, options }, { signal });
    }

    async setWord(word, phonemes) {
        await this.#enqueue("setWord", { word, phonemes });
        this.#settings.words.push([word, phonemes]); // for a worker that takes this one's place
    }

    async live({ node, onFrame, onPhoneme, onLost, onError, ...options } = {}) {
        this.#requireOpen();
        const live = new Live({ onFrame, onPhoneme, onLost, onError });
        const caller = await Caller.start((message) => live.hear(message));
        this.#lives.add(live);
        try {
            await caller.call("load", { ...this.#settings, words: [], uses: ["live"] });
            await live.begin(caller, node, options, () => this.#lives.delete(live));
        } catch (error) {
            live.close();
            caller.end(error);
            this.#lives.delete(live);
            throw error;
        }
        return live;
    }

    /** The bytes of memory that the engine's worker holds. */
    memory() {
        return this.#enqueue("memory", {});
    }

    close() {
        if (!this.#isClosed) {
            this.#isClosed = true;
            const closed = new TessarinError(CANCELLED, "the engine was closed");
            this.#caller?.then((caller) => caller.end(closed), () => {});
            this.#lives.forEach((live) => live.close());
        }
    }

    #requireOpen() {
        if (this.#isClosed) {
            throw new Error("the engine is closed");
        }
    }

    /** One call after the other. A search cannot be interrupted from outside, so a call that is
        aborted ends its worker, and the next one starts another. */
    async #enqueue(call, args, { signal, onProgress, transfer } = {}) {
        this.#requireOpen();
        signal?.throwIfAborted();
        const before = this.#queue;
        let done;
        this.#queue = new Promise((resolve) => {
            done = resolve;
        });
        const turn = (async () => {
            await before;
            try {
                signal?.throwIfAborted();
                this.#requireOpen();
                const caller = await this.#worker();
                const onAbort = () => {
                    this.#caller = null;
                    caller.end(signal.reason);
                };
                signal?.addEventListener("abort", onAbort, { once: true });
                try {
                    signal?.throwIfAborted();
                    return await caller.call(call, args, transfer, onProgress);
                } finally {
                    signal?.removeEventListener("abort", onAbort);
                }
            } finally {
                done();
            }
        })();
        return signal ? Promise.race([turn, aborted(signal, turn)]) : turn;
    }

    #worker() {
        this.#caller ??= (async () => {
            const caller = await Caller.start();
            try {
                await caller.call("load", { ...this.#settings, uses: [] });
                return caller;
            } catch (error) {
                caller.end(error);
                this.#caller = null;
                throw error;
            }
        })();
        return this.#caller.then((caller) => {
            if (!caller.isDead || this.#isClosed) {
                return caller;
            }
            this.#caller = null; // it failed
            return this.#worker();
        });
    }
}

/** Rejects when `signal` is aborted before `turn` has ended, also while that waits for others. */
function aborted(signal, turn) {
    return new Promise((_, reject) => {
        const onAbort = () => reject(signal.reason);
        signal.addEventListener("abort", onAbort, { once: true });
        const stop = () => signal.removeEventListener("abort", onAbort);
        turn.then(stop, stop);
    });
}
