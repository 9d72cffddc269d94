// What the tests of the package share: the package as it was built, the demo, and the native engine.

import { execFileSync } from "node:child_process";
import { readFileSync } from "node:fs";
import { fileURLToPath } from "node:url";

const root = new URL("../../", import.meta.url);
const built = new URL("build/wasm/", root);
export const packageUrl = new URL("package/", built);
export const pageFolder = fileURLToPath(new URL("browser/", built));

export const demoWav = fileURLToPath(new URL("data/demo/echo-test.wav", root));
export const demoText = readFileSync(new URL("data/demo/echo-test.txt", root), "utf8");
export const { Engine, TessarinError, weightsAt } = await import(new URL("src/index.js", packageUrl));

/** The samples of a 16-bit WAV file with a plain header. */
export function readWav(path = demoWav) {
    const bytes = readFileSync(path);
    const pcm = new Int16Array(bytes.buffer.slice(bytes.byteOffset + 44,
        bytes.byteOffset + bytes.length - (bytes.length % 2)));
    return { samples: Float32Array.from(pcm, (value) => value / 32768), rate: bytes.readUInt32LE(24) };
}

const tool = process.env.TESSARIN_TOOL ?? fileURLToPath(new URL("build/dev/apps/tessarin/tessarin", root));
const data = fileURLToPath(new URL("data", root));

export const runTool = (...args) => JSON.parse(execFileSync(tool, [...args, "-q", "--data", data],
    { encoding: "utf8", maxBuffer: 1 << 28, stdio: ["ignore", "pipe", "pipe"] }));

/** [start, end, weights] of the visemes that the library finds in live audio. */
export function liveReference(blockMs) {
    return JSON.parse(execFileSync("/usr/bin/python3",
        [fileURLToPath(new URL("live_reference.py", import.meta.url)), demoWav, String(blockMs)], {
            encoding: "utf8", maxBuffer: 1 << 28,
            env: {
                ...process.env, PYTHONPATH: fileURLToPath(new URL("bindings/python", root)),
                PYTHONDONTWRITEBYTECODE: "1", TESSARIN_DATA: data,
                TESSARIN_LIBRARY: process.env.TESSARIN_LIBRARY ??
                    fileURLToPath(new URL("build/dev/libtessarin.so", root)),
            },
        }));
}
