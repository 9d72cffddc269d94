// Live audio in the thread where it is heard: pushed blocks in, frames of shapes out.

import { ringReader } from "./ring.js";
import { liveOptions } from "./options.js";
import { LIVE_FRAME, LIVE_PHONEME, LIVE_STRETCH } from "./records.js";
import { Shapes } from "./shapes.js";

const POLL_MS = 5;
/** Audio that was lost is made up for by silence, so that times stay right, up to so much. */
const MOST_SILENCE_S = 10;

export class LiveCore {
    #module;
    #handle;
    #shapes;
    #post;
    #rate;
    #room = 0; // for a block
    #roomSize = 0;
    #silence = new Float32Array(1024);
    #reader;
    #timer;

    /** `post(stretch, transfer)` receives what became final. */
    constructor(module, model, options, post) {
        this.#module = module;
        this.#post = post;
        this.#rate = options.rate ?? 16000;
        this.#shapes = new Shapes(module, options.shapes ?? "visemes");
        this.#handle = module.scratch((place) =>
            module.create("live", "live", model, liveOptions(place, options)));
    }

    describe() {
        return this.#shapes.describe();
    }

    push(samples) {
        this.#hear(samples);
        this.#take("take_live");
    }

    finish() {
        clearTimeout(this.#timer);
        this.#drain();
        this.#take("finish_live");
    }

    /** Reads a ring from now on. */
    listen(ring, onFailure) {
        this.#reader = ringReader(ring);
        const read = () => {
            try {
                if (this.#drain()) {
                    this.#take("take_live");
                }
                this.#timer = setTimeout(read, POLL_MS);
            } catch (error) {
                onFailure(error);
            }
        };
        read();
    }

    #drain() {
        const before = this.#reader?.position;
        this.#reader?.read((samples) => this.#hear(samples), (lost) => this.#hearSilence(lost));
        return this.#reader !== undefined && this.#reader.position !== before;
    }

    #hearSilence(frames) {
        let left = Math.min(frames, MOST_SILENCE_S * this.#rate);
        while (left > 0) {
            const count = Math.min(left, this.#silence.length);
            this.#hear(this.#silence.subarray(0, count));
            left -= count;
        }
    }

    #hear(samples) {
        const module = this.#module;
        if (this.#roomSize < samples.length) {
            module.free(this.#room);
            this.#room = 0;
            this.#room = module.malloc(4 * samples.length);
            this.#roomSize = samples.length;
        }
        new Float32Array(module.view.buffer, this.#room, samples.length).set(samples);
        const code = module.call("push_live_audio", this.#handle, this.#room, 4 * samples.length);
        if (code !== 0) {
            throw module.fail(code, "live");
        }
    }

    #take(name) {
        const module = this.#module;
        const stretch = module.scratch((place) => {
            const at = place.room(LIVE_STRETCH.size);
            const code = module.call(name, this.#handle, at);
            if (code !== 0) {
                throw module.fail(code, "live");
            }
            return LIVE_STRETCH.read(module, at);
        });
        const { frames, frameCount, phonemes, phonemeCount, endMs } = stretch;
        if (frameCount + phonemeCount === 0) {
            return;
        }
        const times = new Float64Array(2 * frameCount);
        for (let i = 0; i < frameCount; ++i) {
            const at = frames + i * LIVE_FRAME.size;
            times[2 * i] = Number(module.view.getBigInt64(at, true));
            times[2 * i + 1] = Number(module.view.getBigInt64(at + 8, true));
        }
        const weights = this.#shapes.mixLive(frames, frameCount, LIVE_FRAME.size);
        this.#post({
            times, weights, endMs, phonemes: module.array(LIVE_PHONEME, phonemes, phonemeCount),
        }, [times.buffer, weights.buffer]);
    }
}
