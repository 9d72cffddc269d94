// What the tests of the page share: pages made by the tool, and a browser that shows them.

import { execFileSync } from "node:child_process";
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { fileURLToPath, pathToFileURL } from "node:url";
import { chromium } from "playwright-core";

const demo = fileURLToPath(new URL("../../data/demo/echo-test", import.meta.url));
export const demoWav = `${demo}.wav`;
export const demoText = `${demo}.txt`;

const folder = mkdtempSync(join(tmpdir(), "tessarin_page_"));
export const scratch = (name) => join(folder, name);

export function runTool(...args) {
    return execFileSync(process.env.TESSARIN_TOOL, args,
        { encoding: "utf8", maxBuffer: 1 << 28, stdio: ["ignore", "pipe", "pipe"] });
}

// A page made by the tool, as a file.
export function makePage(name, ...args) {
    runTool("view", ...args, "-q", "-o", scratch(name));
    return scratch(name);
}

export function makePageOf(name, wav, result) {
    writeFileSync(scratch("timings.json"), JSON.stringify(result));
    return makePage(name, wav, "--timings", scratch("timings.json"));
}

// The demo as often as wanted, one after the other, with timings to match.
export function repeatedDemo(result, times) {
    const wav = readFileSync(demoWav);
    const pcm = wav.subarray(44);
    const header = Buffer.from(wav.subarray(0, 44));
    header.writeUInt32LE(36 + pcm.length * times, 4);
    header.writeUInt32LE(pcm.length * times, 40);
    writeFileSync(scratch("long.wav"), Buffer.concat([header, ...Array(times).fill(pcm)]));
    const length = Math.round(pcm.length / 32);
    const shifted = (spans, ms) => spans.map((span) => ({
        ...span, start_ms: span.start_ms + ms, end_ms: span.end_ms + ms,
        ...(span.keys && { keys: span.keys.map(([at, weight]) => [at + ms, weight]) }),
    }));
    const all = { ...result, duration_ms: length * times };
    for (const list of ["words", "phonemes", "events", "frames", "curves"]) {
        all[list] = Array.from({ length: times }, (_, i) => shifted(result[list], i * length))
            .flat();
    }
    return { wav: scratch("long.wav"), result: all };
}

let browser;

// Opens a page and collects what goes wrong on it.
export async function openPage(file, options = {}) {
    browser ??= await chromium.launch({
        executablePath: process.env.CHROMIUM ?? "/usr/bin/chromium",
        args: process.getuid() === 0 ? ["--no-sandbox"] : [],
    });
    const viewport = { width: 1280, height: 800 };
    const context = await browser.newContext({ viewport, ...options });
    const page = await context.newPage();
    page.troubles = [];
    page.requests = [];
    page.on("pageerror", (error) => page.troubles.push(error.message));
    page.on("console", (message) => {
        if (["error", "warning"].includes(message.type())) {
            page.troubles.push(message.text());
        }
    });
    page.on("request", (request) => page.requests.push(request.url()));
    await page.goto(pathToFileURL(file).href);
    await page.waitForFunction(() => window.tessarin && document.fonts.status === "loaded");
    await drawn(page);
    return page;
}

export async function closeAll() {
    await browser?.close();
    rmSync(folder, { recursive: true, force: true });
}

// Until the page has drawn what was done to it.
export async function drawn(page) {
    await page.evaluate(() => new Promise((done) =>
        requestAnimationFrame(() => requestAnimationFrame(done))));
}

export async function seek(page, ms) {
    await page.evaluate((at) => window.tessarin.player.seek(at), ms);
    await drawn(page);
}

export const position = (page) => page.evaluate(() => window.tessarin.player.positionMs);
export const view = (page) => page.evaluate(() => {
    const { fromMs, pxPerMs, width } = window.tessarin.timeline;
    return { fromMs, pxPerMs, width };
});

export const middleOf = (span) => (span.start_ms + span.end_ms) / 2;

// Where a time stands on the screen, in one of the rows of the timeline.
export async function placeOf(page, ms, row) {
    return page.evaluate(([at, name]) => {
        const { timeline } = window.tessarin;
        const box = document.getElementById("timeline").getBoundingClientRect();
        const lane = timeline.lanes[name];
        return { x: box.left + timeline.xOf(at), y: box.top + lane.y + lane.height / 2 };
    }, [ms, row]);
}
