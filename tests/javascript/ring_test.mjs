import assert from "node:assert/strict";
import { test } from "node:test";
import { setTimeout as sleep } from "node:timers/promises";
import { packageUrl } from "./driver.mjs";

const { BlockWriter, makeRing, RING_SAMPLES, ringReader, SharedWriter } =
    await import(new URL("src/ring.js", packageUrl));

const kBlock = 128;

/** The next block of a signal that counts. */
function counter() {
    let next = 0;
    return () => Float32Array.from({ length: kBlock }, () => next++);
}

function makeShared() {
    // As makeRing does on a page that may share memory; the counts are about to begin again.
    const counts = new Int32Array(new SharedArrayBuffer(12)).fill(-2 * kBlock, 0, 2);
    const end = { counts, samples: new Float32Array(new SharedArrayBuffer(4 * RING_SAMPLES)) };
    return { writer: new SharedWriter(end), reader: ringReader(end), close: () => {} };
}

function makeBlocks() {
    const { writer, reader } = makeRing();
    assert.ok(writer.port, "Node has no cross-origin isolation");
    return {
        writer: new BlockWriter(writer), reader: ringReader(reader), close: () => writer.port.close(),
    };
}

for (const [name, make] of [["in shared memory", makeShared], ["of blocks", makeBlocks]]) {
    test(`a ring ${name} keeps what fits, in order, and counts what does not`, async () => {
        const { writer, reader, close } = make();
        const block = counter();
        const heard = [];
        let lost = 0;
        const read = async () => {
            await sleep(20); // messages arrive
            reader.read((samples) => heard.push(...samples), (count) => { lost += count; });
            await sleep(20);
        };
        const fits = RING_SAMPLES / kBlock;
        const tooMany = 20;
        const written = Array.from({ length: fits + tooMany }, () => writer.write(block()));
        assert.deepEqual(written, written.map((_, i) => i < fits));
        await read();
        // Reading made room for as much again.
        for (let i = 0; i < fits; ++i) {
            assert.ok(writer.write(block()));
        }
        await read();
        assert.equal(lost, tooMany * kBlock);
        assert.equal(reader.position, (2 * fits + tooMany) * kBlock);
        const first = fits * kBlock;
        assert.deepEqual(heard, Array.from({ length: 2 * first },
            (_, i) => i < first ? i : i + tooMany * kBlock));
        close();
    });
}
