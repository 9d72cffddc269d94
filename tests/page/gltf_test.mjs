// The validator of the format reads every glTF file that the tool writes.

import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { after, test } from "node:test";
import validator from "gltf-validator";

const folder = mkdtempSync(join(tmpdir(), "tessarin_gltf_"));
after(() => rmSync(folder, { recursive: true, force: true }));
const scratch = (name) => join(folder, name);

const sounds = "_ 200\nm 90\nAA 200\nf 90\nUW 240\n_ 200\n";

function animate(name, ...options) {
    execFileSync(process.env.TESSARIN_TOOL, ["animate", "-", "-o", scratch(name), ...options],
        { input: sounds, encoding: "utf8" });
    return readFileSync(scratch(name));
}

async function assertValid(bytes, name, isOwn = true) {
    const report = await validator.validateBytes(new Uint8Array(bytes));
    const { messages } = report.issues;
    assert.equal(report.issues.numErrors, 0, `${name}: ${JSON.stringify(messages, null, 1)}`);
    // A .glb of a user's .gltf keeps its buffer as text, which is allowed and warned of.
    assert.ok(!isOwn || report.issues.numWarnings === 0, `${name}: ${JSON.stringify(messages, null, 1)}`);
    return report;
}

test("heads of all sets are valid, as binary and as text", async () => {
    for (const name of ["a.glb", "a.visemes.glb", "a.gltf"]) {
        const { info } = await assertValid(animate(name), name);
        assert.equal(info.animationCount, 1);
        assert.equal(info.hasMorphTargets, true);
    }
});

test("an animation for VRM is valid", async () => {
    const { info } = await assertValid(animate("a.vrma"), "a.vrma");
    assert.deepEqual(info.extensionsUsed, ["VRMC_vrm_animation"]);
});

test("a file that was given stays valid, through both forms", async () => {
    animate("head.visemes.glb");
    animate("head.gltf");
    for (const [from, to] of [["head.visemes.glb", "b.glb"], ["head.gltf", "b.glb"],
        ["head.visemes.glb", "b.gltf"], ["b.gltf", "b.gltf"]]) {
        const bytes = animate(to, "--into", scratch(from), "--fps", "60");
        await assertValid(bytes, `${from} to ${to}`, false);
    }
});

test("the validator would find what is wrong", async () => {
    const bytes = animate("c.gltf").toString("utf8").replace(/"POSITION": 0,/, '"POSITION": 99999,');
    writeFileSync(scratch("c.gltf"), bytes);
    const report = await validator.validateBytes(new Uint8Array(readFileSync(scratch("c.gltf"))));
    assert.ok(report.issues.numErrors > 0);
});
