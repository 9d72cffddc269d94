// A set of mouth shapes, and the weights of its shapes for frames.

import { FRAME } from "./records.js";

export class Shapes {
    /** `set` is the name of a built-in set, or the text of a map of one's own. */
    constructor(module, set) {
        this.module = module;
        this.handle = set.includes("\n") ? this.#fromText(set)
            : module.scratch((place) => module.create(`shapes ${set}`, "shapes", place.text(set)));
        this.count = module.call("get_shape_count", this.handle);
    }

    #fromText(text) {
        const { module } = this;
        const kReasonSize = 256;
        return module.scratch((place) => {
            const reason = place.room(kReasonSize);
            const { code, handle } = module.tryCreate("shapes_from_text", place.text(text), reason,
                kReasonSize);
            if (code !== 0) {
                throw module.fail(code, module.textAt(reason, kReasonSize) || "shapes");
            }
            return handle;
        });
    }

    describe() {
        const { module, handle } = this;
        const numbers = Array.from({ length: this.count }, (_, i) => i);
        return {
            set: module.textAt(module.call("get_shape_set", handle)),
            names: numbers.map((i) => module.textAt(module.call("get_shape_name", handle, i))),
            closed: numbers.map((i) => module.call("is_closed_shape", handle, i) !== 0),
            rest: module.call("get_rest_shape", handle),
        };
    }

    /** The weights of `count` frames of the C interface at `frames`, a row for each. */
    mix(frames, count) {
        const { module } = this;
        return module.scratch((place) => {
            const total = count * this.count;
            const out = place.room(8 * total);
            const code = module.call("mix_shapes", this.handle, frames, count, out);
            if (code !== 0) {
                throw module.fail(code, "shapes");
            }
            return Float32Array.from(new Float64Array(module.view.buffer, out, total));
        });
    }

    /** The same of frames of live audio, whose times are longer. */
    mixLive(frames, count, size) {
        const { module } = this;
        return module.scratch((place) => {
            const all = place.room(FRAME.size * count);
            const kLiveTimes = 16;
            const kTimes = 8;
            for (let i = 0; i < count; ++i) {
                module.bytesAt(all + i * FRAME.size + kTimes, FRAME.size - kTimes)
                    .set(module.bytesAt(frames + i * size + kLiveTimes, FRAME.size - kTimes));
            }
            return this.mix(all, count);
        });
    }

    free() {
        this.module.call("free_shapes", this.handle);
    }
}
