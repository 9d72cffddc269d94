// The files of the package, and reading them in a browser or in Node.

import { hasSimd } from "./module.js";

// Written out, so that bundlers see them and take the files along.
export const FILES = {
    codeSimd: new URL("../dist/tessarin-simd.wasm", import.meta.url).href,
    codePlain: new URL("../dist/tessarin-plain.wasm", import.meta.url).href,
    model: new URL("../data/en-us.model.gz", import.meta.url).href,
    calibration: new URL("../data/en-us.calibration.gz", import.meta.url).href,
    hearingModel: new URL("../data/en-us-hearing.model.gz", import.meta.url).href,
    trigrams: new URL("../data/en-us.trigrams.gz", import.meta.url).href,
    lexicon: new URL("../data/en-us.lexicon", import.meta.url).href,
};

async function bytesOf(url) {
    if (url.startsWith("file:")) {
        const { readFile } = await import("node:fs/promises");
        return new Uint8Array(await readFile(new URL(url)));
    }
    const response = await fetch(url);
    if (!response.ok) {
        throw new Error(`${url}: ${response.status} ${response.statusText}`);
    }
    return new Uint8Array(await response.arrayBuffer());
}

/** What a server that knows the ending may have done already. */
async function unpacked(bytes) {
    if (bytes[0] !== 0x1f || bytes[1] !== 0x8b) {
        return bytes;
    }
    const stream = new Blob([bytes]).stream().pipeThrough(new DecompressionStream("gzip"));
    return new Uint8Array(await new Response(stream).arrayBuffer());
}

/** Reads files by the names of FILES, or from where `urls` says. */
export function fileReader(urls = {}, simd = hasSimd()) {
    const all = { ...FILES, ...urls };
    return async (name) => {
        const key = name !== "code" ? name : simd ? "codeSimd" : "codePlain";
        return unpacked(await bytesOf(all[key]));
    };
}
