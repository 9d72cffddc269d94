// The WebAssembly module: loading it, its memory, and calls of the C interface.

import { TessarinError } from "./errors.js";

// A module that adds two vectors: valid where there is 128-bit SIMD.
const SIMD_PROBE = Uint8Array.of(0, 97, 115, 109, 1, 0, 0, 0, 1, 5, 1, 96, 0, 1, 123, 3, 2, 1, 0, 10,
    10, 1, 8, 0, 65, 0, 253, 15, 253, 98, 11);

export const hasSimd = () => WebAssembly.validate(SIMD_PROBE);

const NOT_SUPPORTED = 52; // ENOSYS of this C library: it has neither files nor a system

export class Module {
    /** Of the bytes of a module. `onProgress(done, total)` is called in searches. */
    static async load(bytes) {
        const self = new Module();
        const module = await WebAssembly.compile(bytes);
        self.#instance = await WebAssembly.instantiate(module, self.#importsFor(module));
        self.#instance.exports._initialize();
        return self;
    }

    #instance;
    #view;
    /** Of the search that runs: called with done and total. */
    onProgress = null;

    #importsFor(module) {
        const known = {
            clock_time_get: (_clock, _precision, at) => {
                this.view.setBigUint64(at, BigInt(Math.round(performance.now() * 1e6)), true);
                return 0;
            },
            environ_sizes_get: (countAt, sizeAt) => {
                this.view.setUint32(countAt, 0, true);
                this.view.setUint32(sizeAt, 0, true);
                return 0;
            },
            environ_get: () => 0,
            proc_exit: (code) => {
                throw new Error(`the engine ended with code ${code}`);
            },
            emscripten_notify_memory_growth: () => {},
            // For the key of a hash table. Node 18 has no global crypto.
            getentropy: (at, size) => {
                const bytes = this.bytesAt(at, size);
                for (let i = 0; i < size; ++i) {
                    bytes[i] = 256 * Math.random();
                }
                globalThis.crypto?.getRandomValues(bytes);
                return 0;
            },
            tessarin_js_progress: (done, total) => {
                this.onProgress?.(done, total);
                return 0;
            },
        };
        const imports = {};
        for (const { module: from, name, kind } of WebAssembly.Module.imports(module)) {
            imports[from] ??= {};
            if (kind === "function") {
                imports[from][name] = known[name] ??
                    (() => from.startsWith("wasi") ? NOT_SUPPORTED : -NOT_SUPPORTED);
            }
        }
        return imports;
    }

    /** A view of the memory as large as it is now. */
    get view() {
        const { buffer } = this.#instance.exports.memory;
        if (this.#view?.buffer !== buffer) {
            this.#view = new DataView(buffer);
        }
        return this.#view;
    }

    get memoryBytes() {
        return this.#instance.exports.memory.buffer.byteLength;
    }

    bytesAt(at, size) {
        return new Uint8Array(this.view.buffer, at, size);
    }

    textAt(at, most = Infinity) {
        if (at === 0) {
            return "";
        }
        const all = new Uint8Array(this.view.buffer);
        let end = at;
        while (end < all.length && end - at < most && all[end] !== 0) {
            ++end;
        }
        return new TextDecoder().decode(all.subarray(at, end));
    }

    call(name, ...args) {
        return this.#instance.exports[`tessarin_${name}`](...args);
    }

    malloc(size) {
        const at = this.#instance.exports.malloc(Math.max(size, 1)) >>> 0;
        if (at === 0) {
            throw new TessarinError(1, "out of memory");
        }
        return at;
    }

    free(at) {
        this.#instance.exports.free(at);
    }

    /** Runs `body` with a scratch whose blocks are freed after it. */
    scratch(body) {
        const blocks = [];
        const make = (size) => {
            blocks.push(this.malloc(size));
            return blocks.at(-1);
        };
        const place = {
            room: (size) => {
                const at = make(size);
                this.bytesAt(at, size).fill(0);
                return at;
            },
            bytes: (bytes) => {
                const at = make(bytes.length);
                this.bytesAt(at, bytes.length).set(bytes);
                return at;
            },
            /** Zero-terminated; 0 for null. */
            text: (text) => text == null ? 0 : place.bytes(new TextEncoder().encode(`${text}\0`)),
            floats: (samples) => place.bytes(
                new Uint8Array(samples.buffer, samples.byteOffset, samples.byteLength)),
            /** A struct that begins with its size. */
            record: (type, values) => {
                const at = place.room(type.size);
                type.write(this, at, { ...values, ...("size" in values ? { size: type.size } : {}) });
                return at;
            },
            array: (type, all) => {
                const at = place.room(type.size * all.length);
                all.forEach((values, i) => type.write(this, at + i * type.size, values));
                return at;
            },
        };
        try {
            return body(place);
        } finally {
            blocks.forEach((at) => this.free(at));
        }
    }

    fail(code, subject) {
        const why = this.textAt(this.call("get_error_text", code));
        return new TessarinError(code, subject ? `${subject}: ${why}` : why);
    }

    /** What create_NAME gives through its last parameter, or throws the error of `subject`. */
    create(subject, name, ...args) {
        const { code, handle } = this.tryCreate(name, ...args);
        if (code !== 0) {
            throw this.fail(code, subject);
        }
        return handle;
    }

    tryCreate(name, ...args) {
        return this.scratch((place) => {
            const out = place.room(4);
            const code = this.call(`create_${name}`, ...args, out);
            return { code, handle: this.view.getUint32(out, true) };
        });
    }

    /** What get_NAME of `handle` gives: an array of `type`. */
    items(type, name, handle) {
        return this.scratch((place) => {
            const countAt = place.room(4);
            const at = this.call(`get_${name}`, handle, countAt) >>> 0;
            const count = at === 0 ? 0 : this.view.getUint32(countAt, true);
            return this.array(type, at, count);
        });
    }

    array(type, at, count) {
        return Array.from({ length: count }, (_, i) => type.read(this, at + i * type.size));
    }
}
