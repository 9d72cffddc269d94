// The ring between the thread that plays or records audio and the worker that hears it. It is
// bounded; what does not fit is lost, and both ends know how much.
//
// In shared memory the audio thread copies samples and sets one number. Where a page may not share
// memory (it is not cross-origin isolated), a fixed number of blocks goes to and fro in messages.

const WRITTEN = 0; // samples that were written since the beginning, modulo 2^32
const READ = 1; // that were read
const LOST = 2; // that did not fit
const NUM_COUNTS = 3;

export const RING_SAMPLES = 1 << 14; // a third of a second at 48 kHz
export const BLOCK_SAMPLES = 512;
export const NUM_BLOCKS = RING_SAMPLES / BLOCK_SAMPLES;

export const canShare = () =>
    typeof SharedArrayBuffer !== "undefined" && globalThis.crossOriginIsolated === true;

/** Both ends of a new ring, to be sent to where they are used. */
export function makeRing() {
    if (canShare()) {
        const shared = {
            counts: new Int32Array(new SharedArrayBuffer(4 * NUM_COUNTS)),
            samples: new Float32Array(new SharedArrayBuffer(4 * RING_SAMPLES)),
        };
        return { writer: shared, reader: shared, transferOfWriter: [], transferOfReader: [] };
    }
    const { port1, port2 } = new MessageChannel();
    return {
        writer: { port: port1 }, reader: { port: port2 }, transferOfWriter: [port1],
        transferOfReader: [port2],
    };
}

export const ringReader = (end) => end.port ? new BlockReader(end.port) : new SharedReader(end);

/** The audio thread's end in shared memory. Writing neither allocates nor waits. */
export class SharedWriter {
    constructor({ counts, samples }) {
        this.counts = counts;
        this.samples = samples;
    }

    /** Writes a block, or loses all of it. Returns whether it was written. */
    write(block) {
        const written = Atomics.load(this.counts, WRITTEN);
        const waiting = (written - Atomics.load(this.counts, READ)) >>> 0;
        if (waiting + block.length > this.samples.length) {
            Atomics.add(this.counts, LOST, block.length);
            return false;
        }
        for (let i = 0; i < block.length; ++i) {
            this.samples[(written + i) & (this.samples.length - 1)] = block[i];
        }
        Atomics.store(this.counts, WRITTEN, (written + block.length) | 0);
        return true;
    }
}

class SharedReader {
    position = 0;
    #heardLost = 0;

    constructor({ counts, samples }) {
        this.counts = counts;
        this.samples = samples;
    }

    /** Calls `onSamples` for what waits, and `onLost` with a number of samples before what followed
        them: within one read the order of the two is not known, which is of no matter to times. */
    read(onSamples, onLost) {
        const size = this.samples.length;
        const begin = Atomics.load(this.counts, READ);
        const waiting = (Atomics.load(this.counts, WRITTEN) - begin) >>> 0;
        for (let left = waiting, at = begin; left > 0;) {
            const first = at & (size - 1);
            const count = Math.min(left, size - first);
            onSamples(this.samples.slice(first, first + count));
            left -= count;
            at = (at + count) | 0;
            Atomics.store(this.counts, READ, at);
        }
        this.position += waiting;
        const lost = (Atomics.load(this.counts, LOST) - this.#heardLost) >>> 0;
        if (lost > 0) {
            this.#heardLost = (this.#heardLost + lost) | 0;
            this.position += lost;
            onLost(lost);
        }
    }
}

/** The audio thread's end in messages: all blocks are made at the beginning, and one that is away is
    not waited for. */
export class BlockWriter {
    #port;
    #free = [];
    #block = null;
    #used = 0;
    #message = { samples: null, lost: 0 };
    #transfer = [null];
    #lost = 0;

    constructor({ port }) {
        this.#port = port;
        for (let i = 0; i < NUM_BLOCKS; ++i) {
            this.#free.push(new Float32Array(BLOCK_SAMPLES));
        }
        port.onmessage = ({ data }) => this.#free.push(data);
    }

    write(block) {
        if (this.#block === null) {
            this.#block = this.#free.pop() ?? null;
            this.#used = 0;
        }
        if (this.#block === null) {
            this.#lost += block.length;
            return false;
        }
        this.#block.set(block, this.#used);
        this.#used += block.length;
        if (this.#used + block.length > this.#block.length) {
            this.#message.samples = this.#block;
            this.#message.used = this.#used;
            this.#message.lost = this.#lost;
            this.#transfer[0] = this.#block.buffer;
            this.#port.postMessage(this.#message, this.#transfer);
            this.#block = null;
            this.#lost = 0;
        }
        return true;
    }
}

class BlockReader {
    position = 0;
    #waiting = [];
    #port;

    constructor(port) {
        this.#port = port;
        port.onmessage = ({ data }) => this.#waiting.push(data);
    }

    read(onSamples, onLost) {
        for (const { samples, used, lost } of this.#waiting.splice(0)) {
            if (lost > 0) {
                onLost(lost);
            }
            onSamples(samples.subarray(0, used));
            this.position += lost + used;
            this.#port.postMessage(samples, [samples.buffer]);
        }
    }
}
