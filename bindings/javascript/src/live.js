// Live audio as programs hold it.

import { unpackError } from "./errors.js";
import { makeRing } from "./ring.js";

const NUM_FRAMES = 256; // that are remembered; at 60 frames a second four seconds
const HIGHEST_RATE = 50000;

const ended = () => new Error("live audio was closed");

export class Live {
    #callbacks;
    #caller;
    #input; // the node of the worklet
    #source;
    #onClose = () => {};
    #beginS = 0;
    #isClosed = false;
    #starts = new Float64Array(NUM_FRAMES); // in seconds of the clock
    #ends = new Float64Array(NUM_FRAMES);
    #weights;
    #count = 0; // since the beginning
    #shown = { time: 0, weights: null };
    #lost = 0;
    #delayMs = NaN;

    /** { set, names, closed, rest } */
    shapes;

    constructor(callbacks) {
        this.#callbacks = callbacks;
    }

    async begin(caller, source, options, onClose) {
        this.#caller = caller;
        this.#onClose = onClose;
        if (source) {
            await this.#listenTo(source, options);
        } else {
            this.#setShapes(await caller.call("live", { options }));
        }
    }

    async #listenTo(source, options) {
        const { context } = source;
        if (context.sampleRate > HIGHEST_RATE) {
            throw new RangeError(`the audio context has ${context.sampleRate} samples a second; ` +
                "make it with { sampleRate: 48000 }");
        }
        await context.audioWorklet.addModule(new URL("./worklet.js", import.meta.url));
        const ring = makeRing();
        this.#setShapes(await this.#caller.call("live", {
            options: { ...options, rate: context.sampleRate }, ring: ring.reader,
        }, ring.transferOfReader));
        this.#input = new AudioWorkletNode(context, "tessarin-input", {
            numberOfInputs: 1, numberOfOutputs: 0, channelCount: 1, channelCountMode: "explicit",
        });
        this.#input.port.onmessage = ({ data }) => this.#hearInput(data);
        this.#input.port.postMessage({ ring: ring.writer }, ring.transferOfWriter);
        this.#source = source;
        source.connect(this.#input);
    }

    #setShapes(shapes) {
        this.shapes = shapes;
        this.#weights = new Float32Array(NUM_FRAMES * shapes.names.length);
        this.#shown.weights = new Float32Array(shapes.names.length);
    }

    #hearInput({ beginS, lost }) {
        if (beginS !== undefined) {
            this.#beginS = beginS;
        }
        if (lost !== undefined) {
            this.#lost += lost;
            this.#callbacks.onLost?.(lost, this.#lost);
        }
    }

    /** What the worker sends without being asked. */
    hear({ stretch, failure }) {
        if (this.#isClosed) {
            return;
        }
        if (failure) {
            this.#callbacks.onError?.(unpackError(failure));
            this.close();
            return;
        }
        const { times, weights, phonemes } = stretch;
        const width = this.shapes.names.length;
        const now = this.#source?.context.currentTime;
        for (const { label, startMs, endMs, score } of phonemes) {
            this.#callbacks.onPhoneme?.({
                label, score, start: this.#beginS + startMs / 1000, end: this.#beginS + endMs / 1000,
            });
        }
        for (let i = 0; 2 * i < times.length; ++i) {
            const slot = this.#count++ % NUM_FRAMES;
            const row = weights.subarray(i * width, (i + 1) * width);
            this.#starts[slot] = this.#beginS + times[2 * i] / 1000;
            this.#ends[slot] = this.#beginS + times[2 * i + 1] / 1000;
            this.#weights.set(row, slot * width);
            if (now !== undefined) {
                this.#delayMs = 1000 * (now - this.#ends[slot]);
            }
            this.#callbacks.onFrame?.({
                start: this.#starts[slot], end: this.#ends[slot], weights: row,
            });
        }
    }

    /** The weights for `time`, in seconds of the audio context or since the first pushed sample, and
        the time that they are for: `time` itself, or the end of what is known. One object that is
        used again by each call; null before the first frame. */
    weights(time = Infinity) {
        if (this.#count === 0) {
            return null;
        }
        const width = this.shapes.names.length;
        const newest = this.#count - 1;
        const oldest = Math.max(this.#count - NUM_FRAMES, 0);
        const middle = (n) => (this.#starts[n % NUM_FRAMES] + this.#ends[n % NUM_FRAMES]) / 2;
        let after = newest;
        while (after > oldest && middle(after - 1) >= time) {
            --after;
        }
        const before = Math.max(after - 1, oldest);
        const [from, to] = [middle(before), middle(after)];
        const share = to > from ? Math.min(Math.max((time - from) / (to - from), 0), 1) : 1;
        this.#shown.time = from + share * (to - from);
        const [a, b] = [(before % NUM_FRAMES) * width, (after % NUM_FRAMES) * width];
        for (let i = 0; i < width; ++i) {
            const first = this.#weights[a + i];
            this.#shown.weights[i] = first + (this.#weights[b + i] - first) * share;
        }
        return this.#shown;
    }

    /** Samples that were lost because the worker had not taken those before. */
    get lost() {
        return this.#lost;
    }

    /** How long ago the newest frame ended when it came, in milliseconds; NaN without a node. */
    get delayMs() {
        return this.#delayMs;
    }

    /** The bytes of memory that the worker holds. */
    memory() {
        return this.#caller.call("memory");
    }

    /** Hears the next samples. Resolves when they are heard, for whoever pushes faster than they
        were recorded. */
    async push(samples) {
        this.#requireOpen();
        if (!(samples instanceof Float32Array)) {
            throw new TypeError("samples are a Float32Array of one channel, from -1 to 1");
        }
        const own = samples.slice();
        await this.#caller.call("push", { samples: own }, [own.buffer]);
    }

    /** Ends the audio; resolves when all frames have come. */
    async finish() {
        this.#requireOpen();
        this.#stopInput();
        await this.#caller.call("finish");
        this.close();
    }

    /** Ends at once, and gives the memory back. */
    close() {
        if (this.#isClosed) {
            return;
        }
        this.#isClosed = true;
        this.#stopInput();
        this.#caller?.end(ended());
        this.#onClose();
    }

    #stopInput() {
        if (this.#input) {
            this.#source.disconnect(this.#input);
            this.#input.port.postMessage({});
            this.#input = null;
        }
    }

    #requireOpen() {
        if (this.#isClosed) {
            throw ended();
        }
    }
}
