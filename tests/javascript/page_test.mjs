import assert from "node:assert/strict";
import { createReadStream, statSync } from "node:fs";
import { createServer } from "node:http";
import { createRequire } from "node:module";
import { extname, join, normalize } from "node:path";
import { after, before, test } from "node:test";
import { demoText, demoWav, Engine, pageFolder, readWav, weightsAt } from "./driver.mjs";

const { chromium } = createRequire(new URL("../page/package.json", import.meta.url))("playwright-core");

const TYPES = {
    ".html": "text/html", ".js": "text/javascript", ".css": "text/css", ".svg": "image/svg+xml",
    ".wasm": "application/wasm",
};

/** As `python3 -m http.server` does it; with `isolated`, pages may share memory. */
function serve(isolated) {
    const server = createServer((request, response) => {
        const path = join(pageFolder, normalize(new URL(request.url, "http://x").pathname)
            .replace(/\/$/, "/index.html"));
        try {
            statSync(path);
        } catch {
            response.writeHead(404).end();
            return;
        }
        response.writeHead(200, {
            "content-type": TYPES[extname(path)] ?? "application/octet-stream",
            ...(isolated ? {
                "cross-origin-opener-policy": "same-origin",
                "cross-origin-embedder-policy": "require-corp",
            } : {}),
        });
        createReadStream(path).pipe(response);
    });
    return new Promise((resolve) => server.listen(0, "127.0.0.1", () => resolve(server)));
}

let browser;
const servers = [];
before(async () => {
    browser = await chromium.launch({
        executablePath: process.env.CHROMIUM ?? "/usr/bin/chromium",
        args: [
            "--use-fake-ui-for-media-stream", "--use-fake-device-for-media-stream",
            `--use-file-for-fake-audio-capture=${demoWav}`,
            "--autoplay-policy=no-user-gesture-required",
            "--disable-features=AudioWorkletThreadPool", // see openPage
            ...(process.getuid() === 0 ? ["--no-sandbox"] : []),
        ],
    });
});
after(async () => {
    await browser?.close();
    servers.forEach((server) => server.close());
});

async function openPage({ isolated = false } = {}) {
    const server = await serve(isolated);
    servers.push(server);
    const { port } = server.address();
    const context = await browser.newContext({
        viewport: { width: 1180, height: 640 }, permissions: ["microphone"],
    });
    const page = await context.newPage();
    page.troubles = [];
    // The first worklet of a page has a thread of real-time priority, which never starts in a
    // container that has none to give; those after it share an ordinary one.
    await page.addInitScript(() => {
        void new AudioContext().audioWorklet.addModule("data:text/javascript,");
    });
    page.on("pageerror", (error) => page.troubles.push(error.message));
    page.on("console", (message) => {
        if (["error", "warning"].includes(message.type())) {
            page.troubles.push(message.text());
        }
    });
    await page.goto(`http://127.0.0.1:${port}/`);
    await page.waitForFunction(() => globalThis.example, null, { timeout: 60000 });
    return page;
}

/** Where pictures of the page go, for whoever wants to look at them. */
const picture = async (page, name) => {
    if (process.env.TESSARIN_PICTURES) {
        await page.screenshot({ path: join(process.env.TESSARIN_PICTURES, `${name}.png`) });
    }
};

const { samples, rate } = readWav();

/** The shape that stands out at each time of the demo, from its text. */
async function trueShapes() {
    const engine = await Engine.load();
    const track = await engine.track(await engine.align(samples, rate, demoText), { fps: 60 });
    engine.close();
    return (ms) => {
        const weights = weightsAt(track, ms);
        return weights.indexOf(Math.max(...weights));
    };
}

for (const isolated of [false, true]) {
    test(`the page follows the microphone, shared memory ${isolated}`, async () => {
        const page = await openPage({ isolated });
        assert.equal(await page.evaluate(() => crossOriginIsolated), isolated);
        await page.evaluate(() => {
            globalThis.seen = [];
            globalThis.lost = 0;
        });
        await page.click("#microphone");
        await page.waitForFunction(() => example.listening?.live.weights(), null, { timeout: 30000 });
        await page.waitForTimeout(4000);
        const before = await page.evaluate(() => example.listening.live.weights().time);
        await page.waitForTimeout(3000);
        await picture(page, `live-${isolated}`);
        const now = await page.evaluate(() => {
            const { live } = example.listening;
            const { time, weights } = live.weights();
            return { time, sum: weights.reduce((a, b) => a + b, 0), delay: live.delayMs,
                lost: live.lost, names: live.shapes.names.length };
        });
        assert.equal(now.names, 15);
        assert.ok(now.time > before + 1, "time goes on");
        assert.ok(Math.abs(now.sum - 1) < 1e-3);
        console.log(`delay ${Math.round(now.delay)} ms, lost ${now.lost} samples`);
        assert.ok(now.delay > 30 && now.delay < 1000, String(now.delay));
        await page.selectOption("#shapes", "arkit");
        await page.click("#microphone");
        await page.waitForFunction(() => !example.listening);
        await page.click("#microphone");
        await page.waitForFunction(() => example.listening?.live.weights(), null, { timeout: 30000 });
        assert.equal(await page.evaluate(() => example.listening.live.shapes.names.length), 52);
        await page.waitForTimeout(3000);
        await picture(page, `arkit-${isolated}`);
        await page.click("#microphone");
        assert.deepEqual(page.troubles, []);
        await page.context().close();
    });
}

test("live weights in a browser are those of the recording", async () => {
    const page = await openPage();
    const shapeAt = await trueShapes();
    // The demo as it is, by a node that plays it, so that its times are known.
    const heard = await page.evaluate(async ([values, rateHz]) => {
        const { Engine } = await import("tessarin");
        const engine = await Engine.load({ uses: [] });
        const context = new AudioContext({ sampleRate: rateHz });
        const buffer = context.createBuffer(1, values.length, rateHz);
        buffer.copyToChannel(Float32Array.from(values), 0);
        const source = new AudioBufferSourceNode(context, { buffer });
        const frames = [];
        const delays = [];
        let live;
        let lost = 0;
        live = await engine.live({
            node: source, fps: 60,
            onLost: (count) => { lost += count; },
            onFrame: ({ start, end, weights }) => {
                frames.push([start, end, weights.indexOf(Math.max(...weights))]);
                delays.push(live.delayMs);
            },
        });
        const begin = context.currentTime + 0.1;
        source.start(begin);
        await new Promise((done) => { source.onended = done; });
        await new Promise((done) => setTimeout(done, 500));
        engine.close();
        await context.close();
        delays.sort((a, b) => a - b);
        return { begin, frames, lost, median: delays[delays.length >> 1] };
    }, [Array.from(samples), rate]);
    let right = 0;
    let spoken = 0;
    for (const [start, end, shape] of heard.frames) {
        const ms = 1000 * ((start + end) / 2 - heard.begin);
        if (ms > 0 && ms < samples.length / rate * 1000) {
            const expected = shapeAt(ms);
            ++spoken;
            right += shape === expected ? 1 : 0;
        }
    }
    console.log(`right shape ${(100 * right / spoken).toFixed(1)} % of ${spoken} frames, ` +
        `median delay ${Math.round(heard.median)} ms, lost ${heard.lost} samples`);
    assert.ok(spoken > 1000);
    assert.ok(right / spoken > 0.6);
    assert.ok(heard.median < 400, String(heard.median));
    assert.deepEqual(page.troubles, []);
    await page.context().close();
});

test("the page aligns a file with its text and plays it", async () => {
    const page = await openPage();
    await page.setInputFiles("#file", demoWav);
    await page.fill("#text", demoText);
    await page.click("#align:enabled");
    await page.waitForFunction(() => example.played, null, { timeout: 120000 });
    await page.waitForFunction(() => document.getElementById("player").currentTime > 5);
    assert.equal(await page.locator("#words li.now").count() <= 1, true);
    assert.ok(await page.locator("#words li").count() > 20);
    await picture(page, "file");
    assert.deepEqual(page.troubles, []);
    await page.context().close();
});
