import assert from "node:assert/strict";
import { readdirSync, readFileSync } from "node:fs";
import { after, before, test } from "node:test";
import { gzipSync } from "node:zlib";
import {
    demoText, demoWav, Engine, liveReference, packageUrl, readWav, runTool, TessarinError, weightsAt,
} from "./driver.mjs";

const { samples, rate } = readWav();
let engine;
before(async () => {
    engine = await Engine.load();
});
after(() => engine.close());

function assertNear(actual, expected, tolerance, what) {
    assert.ok(Math.abs(actual - expected) <= tolerance,
        `${what}: ${actual} is not ${expected} within ${tolerance}`);
}

const kWeight = 1.01e-4; // the tool rounds to 1e-4

function assertSamePhonemes(found, native) {
    assert.deepEqual(found.phonemes.map(({ label, startMs, endMs }) => [label, startMs, endMs]),
        native.phonemes.map(({ label, start_ms, end_ms }) => [label, start_ms, end_ms]));
    native.phonemes.forEach(({ confidence }, i) => {
        if (confidence !== undefined && confidence !== null) {
            assertNear(found.phonemes[i].confidence, confidence, 1e-3, `confidence ${i}`);
        }
    });
}

async function assertSameTrack(found, native) {
    const track = await engine.track(found);
    assert.deepEqual(track.frames.map(({ startMs, endMs }) => [startMs, endMs]),
        native.frames.map(({ start_ms, end_ms }) => [start_ms, end_ms]));
    native.frames.forEach(({ weights }, i) => {
        const own = track.frames[i].weights;
        for (const label of new Set([...Object.keys(weights), ...Object.keys(own)])) {
            assertNear(own[label] ?? 0, weights[label] ?? 0, kWeight, `frame ${i} ${label}`);
        }
    });
}

for (const simd of [true, false]) {
    test(`an alignment is the native one, simd ${simd}`, async () => {
        const own = await Engine.load({ simd });
        const native = runTool("align", demoWav, "--text", demoText);
        const progress = [];
        const found = await own.align(samples, rate, demoText,
            { onProgress: (done, total) => progress.push(done / total) });
        assertSamePhonemes(found, native);
        assert.deepEqual(
            found.words.map(({ text, startMs, endMs }) => [text, startMs, endMs]),
            native.words.map(({ text, start_ms, end_ms }) => [text, start_ms, end_ms]));
        for (const { text, offset, length } of found.words) {
            assert.equal(demoText.substr(offset, length), text);
        }
        assert.equal(found.match.verdict, native.match.verdict);
        await assertSameTrack(found, native);
        assert.ok(progress.length > 0 && progress.every((share) => share >= 0 && share <= 1));
        own.close();
    });
}

test("hearing without a text is the native one", async () => {
    const native = runTool("recognize", demoWav);
    const found = await engine.recognize(samples, rate);
    assertSamePhonemes(found, native);
    await assertSameTrack(found, native);
});

test("tracks have the shapes that were asked for", async () => {
    const phonemes = [["x", 0, 200], ["AA", 200, 400], ["m", 400, 500], ["x", 500, 900]].map(
        ([label, startMs, endMs]) => ({ label, startMs, endMs, score: 80 }));
    const own = "set own\nshapes open shut\nclosed shut\nrest shut\nAA open\n";
    for (const [shapes, count] of [["visemes", 15], ["arkit", 52], ["vrm", 5], [own, 2]]) {
        const track = await engine.track({ phonemes }, { shapes, fps: 50 });
        assert.equal(track.shapes.names.length, count);
        assert.equal(track.weights.length, count * track.startMs.length);
        assert.equal(track.endMs[0] - track.startMs[0], 20);
    }
    await assert.rejects(engine.track({ phonemes }, { shapes: `${own}nonsense\n` }), /line 6/);
    const track = await engine.track({ phonemes }, { fps: 50 });
    const at = (ms) => {
        const weights = weightsAt(track, ms);
        return track.shapes.names[weights.indexOf(Math.max(...weights))];
    };
    assert.deepEqual([at(-1e9), at(300), at(450), at(1e9)], ["sil", "aa", "PP", "sil"]);
    // Halfway between two frames is half of both.
    const [i, width] = [9, 15];
    const middle = weightsAt(track, track.endMs[i]);
    middle.forEach((weight, s) => assertNear(weight,
        (track.weights[i * width + s] + track.weights[(i + 1) * width + s]) / 2, 1e-6, s));
});

test("live audio in blocks is the native one", async () => {
    const blockMs = 100;
    const expected = liveReference(blockMs);
    assert.ok(expected.length > 1000);
    for (const simd of [true, false]) {
        const own = await Engine.load({ uses: [], simd });
        const frames = [];
        const live = await own.live({
            rate, fps: 60, onFrame: ({ start, end, weights }) =>
                frames.push([Math.round(1000 * start), Math.round(1000 * end), weights]),
        });
        const size = rate * blockMs / 1000;
        for (let begin = 0; begin < samples.length; begin += size) {
            await live.push(samples.subarray(begin, begin + size));
        }
        const shown = live.weights();
        assert.deepEqual(Array.from(shown.weights), Array.from(frames.at(-1)[2]));
        await live.finish();
        assert.ok(frames.length > expected.length); // the last frames wait for the end
        const last = frames.at(-1);
        assertNear(last[1], samples.length / rate * 1000, 20, "end");
        expected.forEach(([start, end, weights], i) => {
            assert.deepEqual(frames[i].slice(0, 2), [start, end]);
            weights.forEach((weight, s) => assertNear(frames[i][2][s], weight, 1e-4, `${start} ms`));
        });
        own.close();
    }
});

test("live audio of every rate is heard, and of none that is out of range", async () => {
    for (const other of [8000, 44100, 48000]) {
        let last = 0;
        const live = await engine.live({ rate: other, shapes: "vrm", onFrame: ({ end }) => {
            last = end;
        } });
        assert.equal(live.weights(), null);
        assert.deepEqual(live.shapes.names, ["aa", "ih", "ou", "ee", "oh"]);
        for (let i = 0; i < 50; ++i) {
            await live.push(new Float32Array(other / 50).map((_, k) => Math.sin(k * i)));
        }
        await live.finish();
        assertNear(last, 1, 0.05, "end");
        await assert.rejects(live.push(new Float32Array(1)), /closed/);
    }
    await assert.rejects(engine.live({ rate: 96000 }), { code: 3 });
    await assert.rejects(engine.live({ shapes: "none" }), { code: 6 });
});

test("a call that is aborted ends, and those after it go on", async () => {
    const reason = new Error("no longer wanted");
    const controller = new AbortController();
    const first = engine.align(samples, rate, demoText,
        { signal: controller.signal, onProgress: () => controller.abort(reason) });
    const next = engine.transcribe("Two words");
    await assert.rejects(first, reason);
    assert.deepEqual((await next).map(({ text }) => text), ["Two", "words"]);
    await assert.rejects(engine.transcribe("x", { signal: AbortSignal.abort(reason) }), reason);
    // While others have their turn.
    const waits = new AbortController();
    const busy = engine.recognize(samples.subarray(0, rate), rate);
    const waiting = engine.transcribe("later", { signal: waits.signal });
    waits.abort(reason);
    await assert.rejects(waiting, reason);
    assert.ok((await busy).phonemes.length > 0);
});

test("words of one's own outlive a worker", async () => {
    await engine.setWord("zyx", "SHIHvAOn");
    const said = async () => (await engine.transcribe("zyx"))[0].pronunciations;
    assert.deepEqual(await said(), [["SHIHvAOn"]]);
    const controller = new AbortController();
    const lost = engine.recognize(samples, rate,
        { signal: controller.signal, onProgress: () => controller.abort() });
    await assert.rejects(lost, { name: "AbortError" });
    assert.deepEqual(await said(), [["SHIHvAOn"]]);
});

test("what is wrong is said", async () => {
    await assert.rejects(engine.align([1, 2], rate, "x"), TypeError);
    await assert.rejects(engine.align(samples, 0, "one"), { code: 3 });
    await assert.rejects(engine.align(samples, rate, "one", { match: "some" }), RangeError);
    await assert.rejects(engine.align(samples, rate, "one", { beam: 7 }), /no option beam/);
    await assert.rejects(engine.align(samples, rate, "a\0b"), /zero/);
    await assert.rejects(engine.align(samples, rate, "one", { fromMs: 1e6 }), { code: 3 });
    await assert.rejects(engine.track({ phonemes: [{ label: "?", startMs: 0, endMs: 1, score: 1 }] }),
        (error) => error instanceof TessarinError && error.code === 2);
    await assert.rejects(engine.setWord("one", "nonsense!"), { code: 2 });
    await assert.rejects(Engine.load({ files: { model: "file:///none" } }), /ENOENT/);
    await assert.rejects(Engine.load({ files: { modell: "x" } }), /modell/);
    const closed = await Engine.load({ uses: [] });
    const waiting = closed.recognize(samples, rate);
    closed.close();
    await assert.rejects(waiting, /closed/);
    await assert.rejects(closed.transcribe("x"), /closed/);
});

test("memory does not grow from call to call", async () => {
    const own = await Engine.load();
    const part = samples.subarray(0, 3 * rate);
    const once = async () => {
        const result = await own.align(part, rate, "one two three", { match: "loose" });
        await own.track(result, { shapes: "arkit", curves: true });
        await assert.rejects(own.align(part, rate, "one", { fromMs: 1e6 }));
    };
    await once();
    await once();
    const before = await own.memory();
    for (let i = 0; i < 10; ++i) {
        await once();
    }
    assert.equal(await own.memory(), before);
    own.close();
});

test("memory does not grow while live audio goes on", async () => {
    const live = await engine.live({ rate, shapes: "arkit", fps: 60 });
    const once = async () => {
        for (let begin = 0; begin < samples.length; begin += rate / 10) {
            await live.push(samples.subarray(begin, begin + rate / 10));
        }
        return live.memory();
    };
    const before = await once();
    await once();
    await once();
    assert.equal(await once(), before);
    live.close();
});

test("what travels is small", () => {
    const gzipped = (...files) => files.reduce((sum, file) =>
        sum + gzipSync(readFileSync(new URL(file, packageUrl)), { level: 9 }).length, 0);
    const scripts = readdirSync(new URL("src/", packageUrl)).map((name) => `src/${name}`);
    for (const code of ["simd", "plain"]) {
        assert.ok(gzipped(`dist/tessarin-${code}.wasm`, ...scripts) < 450e3);
    }
    assert.ok(gzipped("data/en-us.model.gz", "data/en-us.calibration.gz", "data/en-us.lexicon") < 2.5e6);
    assert.ok(gzipped("data/en-us-hearing.model.gz", "data/en-us.trigrams.gz") < 2.5e6);
});
