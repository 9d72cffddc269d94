// The audio thread: hands the first channel of what it is connected to on to the ring.

import { BlockWriter, SharedWriter } from "./ring.js";

const REPORT_EVERY = 64; // blocks, what was lost

class TessarinInput extends AudioWorkletProcessor {
    constructor() {
        super();
        this.writer = null; // until the ring has come
        this.silence = new Float32Array(128);
        this.lost = 0;
        this.blocks = 0;
        this.isOpen = true;
        this.hasBegun = false;
        this.port.onmessage = ({ data: { ring } }) => {
            this.isOpen = ring !== undefined;
            if (ring) {
                this.writer = ring.port ? new BlockWriter(ring) : new SharedWriter(ring);
            }
        };
    }

    process([input]) {
        if (this.writer === null) {
            return this.isOpen;
        }
        if (!this.hasBegun) {
            this.hasBegun = true;
            this.port.postMessage({ beginS: currentTime });
        }
        // An input that nothing plays into has no channels, but time goes on.
        const block = input.length > 0 ? input[0] : this.silence;
        if (!this.writer.write(block)) {
            this.lost += block.length;
        }
        if (++this.blocks >= REPORT_EVERY) {
            this.blocks = 0;
            if (this.lost > 0) {
                this.port.postMessage({ lost: this.lost });
                this.lost = 0;
            }
        }
        return this.isOpen;
    }
}

registerProcessor("tessarin-input", TessarinInput);
