// The worker: one call after the other, and for live audio whatever comes from its ring.

import { Core } from "./core.js";
import { packError } from "./errors.js";
import { fileReader } from "./files.js";
import { LiveCore } from "./live_core.js";
import { thisThread } from "./thread.js";

let core;
let live;
const kProgressMs = 50;

/** Passes on a search's progress now and then. */
function progressOf(id) {
    let last = 0;
    return (done, total) => {
        const now = performance.now();
        if (now - last >= kProgressMs || done >= total) {
            last = now;
            thread.post({ id, progress: [done, total] });
        }
    };
}

const calls = {
    async load({ urls, uses, words, simd }) {
        core = await Core.load(fileReader(urls, simd));
        await core.prepare(uses);
        for (const [word, phonemes] of words) {
            await core.setWord(word, phonemes);
        }
    },
    prepare: ({ uses }) => core.prepare(uses),
    setWord: ({ word, phonemes }) => core.setWord(word, phonemes),
    align: ({ samples, rate, text, options }, id) =>
        core.align(samples, rate, text, options, progressOf(id)),
    recognize: ({ samples, rate, options }, id) =>
        core.recognize(samples, rate, options, progressOf(id)),
    transcribe: ({ text, options }) => core.transcribe(text, options),
    track: ({ result, options }) => core.track(result, options),
    memory: () => core.module.memoryBytes,

    async live({ options, ring }) {
        live = new LiveCore(core.module, await core.modelForHearing(), options,
            (stretch, transfer) => thread.post({ stretch }, transfer));
        if (ring) {
            live.listen(ring, (error) => thread.post({ failure: packError(error) }));
        }
        return live.describe();
    },
    push: ({ samples }) => live.push(samples),
    finish: () => live.finish(),
};

// Messages that came while this one was loading wait in the port.
const thread = await thisThread(({ id, call, args }) => {
    run(id, call, args);
});

let last = Promise.resolve();
function run(id, call, args) {
    last = last.then(async () => {
        try {
            thread.post({ id, result: await calls[call](args, id) });
        } catch (error) {
            thread.post({ id, error: packError(error) });
        }
    });
}
