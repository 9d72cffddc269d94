// Packages that follow a voice live, beside this one, in one Chromium: peers.mjs WAV... plays each
// recording, whose text stands beside it as .txt, to each package, asks 60 times a second which of
// fifteen mouth shapes it shows, and compares with the track that the recording and its text give.
// A package may lag: its share of right shapes is that of the lag that suits it best. Needs
// `./dev wasm`, and `npm ci` here and in tests/page.

import { createReadStream, existsSync, readdirSync, readFileSync, statSync } from "node:fs";
import { createServer } from "node:http";
import { createRequire } from "node:module";
import { extname, join } from "node:path";
import { fileURLToPath } from "node:url";
import { gzipSync } from "node:zlib";
import { demoWav, Engine, readWav, weightsAt } from "../../../tests/javascript/driver.mjs";

const { chromium } = createRequire(new URL("../../../tests/page/package.json", import.meta.url))(
    "playwright-core");
const modules = fileURLToPath(new URL("node_modules/", import.meta.url));
const browserFolder = fileURLToPath(new URL("../../../build/wasm/browser/", import.meta.url));
const RATE = 60;
const MOST_LAG_MS = 400;

// How each package is set up in the page: `start(element)` returns a function that gives the name of
// the shape that it shows now. Each ends with a context of its own.
const PACKAGES = {
    "tessarin": {
        files: ["dist/tessarin-simd.wasm", "src/", "data/en-us-hearing.model.gz",
            "data/en-us.trigrams.gz"].map((file) => join(browserFolder, "tessarin", file)),
        start: async (element) => {
            const { Engine } = await import("/tessarin/src/index.js");
            const engine = await Engine.load({ uses: [] });
            const context = new AudioContext({ sampleRate: 48000 });
            const node = context.createMediaElementSource(element);
            const live = await engine.live({ node, fps: 60 });
            return () => {
                const shown = live.weights();
                return shown && live.shapes.names[shown.weights.indexOf(Math.max(...shown.weights))];
            };
        },
    },
    "@met4citizen/headaudio": {
        files: ["headaudio.min.mjs", "headworklet.min.mjs", "model-en-mixed.bin"].map((file) =>
            join(modules, "@met4citizen/headaudio/dist", file)),
        start: async (element) => {
            const folder = "/node_modules/@met4citizen/headaudio/dist/";
            const { HeadAudio } = await import(`${folder}headaudio.min.mjs`);
            const context = new AudioContext();
            await context.audioWorklet.addModule(`${folder}headworklet.min.mjs`);
            const head = new HeadAudio(context, { processorOptions: {}, parameterData: {} });
            await head.loadModel(`${folder}model-en-mixed.bin`);
            context.createMediaElementSource(element).connect(head);
            const values = {};
            head.onvalue = (key, value) => { values[key] = value; };
            let last = performance.now();
            return () => {
                const now = performance.now();
                head.update(now - last);
                last = now;
                const [key, value] = Object.entries(values).reduce(
                    (best, each) => each[1] > best[1] ? each : best, ["viseme_sil", 0.05]);
                return key;
            };
        },
    },
    "wawa-lipsync": {
        files: [join(modules, "wawa-lipsync/dist/wawa-lipsync.es.js")],
        start: async (element) => {
            const { Lipsync } = await import("/node_modules/wawa-lipsync/dist/wawa-lipsync.es.js");
            const lipsync = new Lipsync();
            lipsync.connectAudio(element);
            return () => {
                lipsync.processAudio();
                return lipsync.viseme;
            };
        },
    },
};

/** The names of fifteen shapes differ a little from package to package. */
const plainName = (name) => {
    const short = String(name).replace(/^viseme_/, "");
    return { I: "ih", O: "oh", U: "ou", kk: "kk", nn: "nn" }[short] ?? short;
};

function serve() {
    const types = { ".js": "text/javascript", ".mjs": "text/javascript", ".html": "text/html",
        ".wasm": "application/wasm", ".wav": "audio/wav" };
    const server = createServer(({ url }, response) => {
        const path = url === "/empty.html" ? null : url.startsWith("/node_modules/")
            ? join(modules, url.slice("/node_modules/".length))
            : url.startsWith("/wav") ? recordings[Number(url.slice(4))] : join(browserFolder, url);
        if (path !== null && !existsSync(path)) {
            response.writeHead(404).end();
            return;
        }
        response.writeHead(200, { "content-type": types[extname(path ?? "empty.html")] ??
            "application/octet-stream" });
        path === null ? response.end("<!doctype html>") : createReadStream(path).pipe(response);
    });
    return new Promise((done) => server.listen(0, "127.0.0.1", () => done(server)));
}

/** Seconds of processor time of a process and all that it started. */
function processorSeconds(root) {
    const stats = readdirSync("/proc").filter((name) => /^\d+$/.test(name)).flatMap((pid) => {
        try {
            const fields = readFileSync(`/proc/${pid}/stat`, "utf8").split(") ")[1].split(" ");
            return [{ pid: Number(pid), parent: Number(fields[1]),
                ticks: Number(fields[11]) + Number(fields[12]) }];
        } catch {
            return [];
        }
    });
    const family = new Set([root]);
    for (let grew = true; grew;) {
        grew = false;
        for (const { pid, parent } of stats) {
            if (family.has(parent) && !family.has(pid)) {
                family.add(pid);
                grew = true;
            }
        }
    }
    return stats.filter(({ pid }) => family.has(pid)).reduce((sum, { ticks }) => sum + ticks, 0) / 100;
}

/** [time in ms, shape] as a package shows them. */
async function follow(start, recording) {
    const server = await chromium.launchServer({
        executablePath: process.env.CHROMIUM ?? "/usr/bin/chromium",
        args: ["--autoplay-policy=no-user-gesture-required",
            "--disable-features=AudioWorkletThreadPool",
            ...(process.getuid() === 0 ? ["--no-sandbox"] : [])],
    });
    const browser = await chromium.connect(server.wsEndpoint());
    const page = await browser.newPage();
    // Takes the worklet thread of real-time priority, which a container may never start.
    await page.addInitScript(() => {
        void new AudioContext().audioWorklet.addModule("data:text/javascript,");
    });
    await page.goto(`${origin}/empty.html`);
    await page.evaluate(async ([source, url]) => {
        globalThis.element = new Audio(url);
        await new Promise((done) => { element.oncanplaythrough = done; });
        globalThis.show = await eval(source)(element);
    }, [`(${start})`, `/wav${recording}`]);
    const before = processorSeconds(server.process().pid);
    const begin = Date.now();
    const shown = await page.evaluate(async (rate) => {
        const all = [];
        const timer = setInterval(() => all.push([1000 * element.currentTime, show()]), 1000 / rate);
        await element.play();
        await new Promise((done) => { element.onended = done; });
        clearInterval(timer);
        return all;
    }, RATE);
    const share = (processorSeconds(server.process().pid) - before) / (Date.now() - begin) * 1000;
    await browser.close();
    await server.close();
    return { shown, share };
}

function sizeOf(path) {
    if (statSync(path).isDirectory()) {
        return readdirSync(path).filter((name) => name.endsWith(".js"))
            .reduce((sum, name) => sum + sizeOf(join(path, name)), 0);
    }
    return gzipSync(readFileSync(path), { level: 9 }).length;
}

const recordings = process.argv.length > 2 ? process.argv.slice(2) : [demoWav];
const engine = await Engine.load();
const truths = [];
for (const path of recordings) {
    const { samples, rate } = readWav(path);
    const text = readFileSync(path.replace(/\.wav$/, ".txt"), "utf8");
    truths.push(await engine.track(await engine.align(samples, rate, text), { fps: RATE }));
}
engine.close();
const server = await serve();
const origin = `http://127.0.0.1:${server.address().port}`;

console.log("| package | right shape | closed lips found | lag | processor | download |");
console.log("|---|---|---|---|---|---|");
for (const [name, { files, start }] of Object.entries(PACKAGES)) {
    const runs = [];
    for (let i = 0; i < recordings.length; ++i) {
        runs.push(await follow(start, i));
    }
    let best = { right: -1 };
    for (let lag = 0; lag <= MOST_LAG_MS; lag += 10) {
        const count = { all: 0, right: 0, closed: 0, found: 0 };
        runs.forEach(({ shown }, i) => {
            const track = truths[i];
            const { names, closed } = track.shapes;
            for (const [ms, shape] of shown) {
                const weights = weightsAt(track, ms - lag);
                const wanted = weights.indexOf(Math.max(...weights));
                const isRight = plainName(shape) === names[wanted];
                ++count.all;
                count.right += isRight;
                count.closed += closed[wanted];
                count.found += closed[wanted] && isRight;
            }
        });
        if (count.right / count.all > best.right) {
            best = { right: count.right / count.all, found: count.found / count.closed, lag };
        }
    }
    const percent = (share) => `${(100 * share).toFixed(1)} %`;
    const share = runs.reduce((sum, each) => sum + each.share, 0) / runs.length;
    const kilobytes = files.reduce((sum, file) => sum + sizeOf(file), 0) / 1000;
    console.log(`| ${name} | ${percent(best.right)} | ${percent(best.found)} | ${best.lag} ms | ` +
        `${percent(share)} | ${Math.round(kilobytes)} kB |`);
}
server.close();
