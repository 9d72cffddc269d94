// The example page: a mouth that follows the microphone or a recording, with the curves beside it.

import { Engine, weightsAt } from "tessarin";
import { Curves } from "./curves.js";
import { Face } from "./face.js";

const $ = (id) => document.getElementById(id);
const face = await Face.load($("face"), "mouth.svg");
const curves = new Curves($("curves"));
const facts = new Map();
let engine;
let context;
let listening = null; // { live, stream, shapesOfFace }
let recording = null; // { samples, rate }
let played = null; // { track, visemes }
let search = null; // an AbortController

function say(text) {
    $("status").textContent = text;
}

function tell(name, value) {
    if (facts.get(name) !== value) {
        facts.set(name, value);
        $("facts").replaceChildren(...[...facts].flatMap(([label, text]) => {
            const [dt, dd] = [document.createElement("dt"), document.createElement("dd")];
            dt.textContent = label;
            dd.textContent = text;
            return [dt, dd];
        }));
    }
}

async function startLive() {
    context ??= new AudioContext({ sampleRate: 48000 });
    await context.resume();
    const stream = await navigator.mediaDevices.getUserMedia({
        audio: { echoCancellation: false, noiseSuppression: false, autoGainControl: false },
    });
    const node = context.createMediaStreamSource(stream);
    const shapes = $("shapes").value;
    let frames = 0;
    const live = await engine.live({
        node, shapes, fps: 60,
        onFrame: () => tell("frames", String(++frames)),
        onLost: (_samples, total) => tell("lost", `${Math.round(total / 48)} ms`),
        onError: stopLive,
    });
    // The drawing knows visemes; another set is for the curves, and for a model of one's own.
    const forFace = shapes === "visemes" ? live : await engine.live({ node, fps: 60 });
    listening = { live, forFace, stream };
    curves.begin(live.shapes.names);
    tell("start", `${Math.round(performance.now() - started)} ms`);
    say("Speak!");
}

function stopLive(error) {
    if (listening) {
        listening.live.close();
        listening.forFace.close();
        listening.stream.getTracks().forEach((track) => track.stop());
        listening = null;
        say(error ? error.message : "Stopped.");
    }
    $("microphone").setAttribute("aria-pressed", "false");
    $("microphone").textContent = "Start the microphone";
}

let started;
$("microphone").addEventListener("click", async () => {
    if (listening) {
        stopLive();
        return;
    }
    started = performance.now();
    $("microphone").setAttribute("aria-pressed", "true");
    $("microphone").textContent = "Stop the microphone";
    played = null;
    $("player").pause();
    say("Listening begins …");
    try {
        await startLive();
    } catch (error) {
        stopLive();
        say(error.message);
    }
});

$("file").addEventListener("change", async () => {
    const [file] = $("file").files;
    if (!file) {
        return;
    }
    try {
        // The browser's own decoders read the file, at the rate that the models are for.
        const decoder = new OfflineAudioContext(1, 1, 16000);
        const audio = await decoder.decodeAudioData(await file.arrayBuffer());
        recording = { samples: audio.getChannelData(0), rate: audio.sampleRate };
        $("player").src = URL.createObjectURL(file);
        $("player").hidden = false;
        $("align").disabled = false;
        tell("length", `${audio.duration.toFixed(1)} s`);
        say(`${file.name} is read.`);
    } catch (error) {
        say(`${file.name}: ${error.message}`);
    }
});

$("align").addEventListener("click", async () => {
    const begin = performance.now();
    search = new AbortController();
    $("cancel").hidden = $("progress").hidden = false;
    const options = {
        signal: search.signal,
        onProgress: (done, total) => {
            $("progress").value = total > 0 ? done / total : 0;
        },
    };
    try {
        const { samples, rate } = recording;
        const text = $("text").value.trim();
        const result = text ? await engine.align(samples, rate, text, options)
            : await engine.recognize(samples, rate, options);
        const [visemes, track] = await Promise.all([
            engine.track(result), engine.track(result, { shapes: $("shapes").value }),
        ]);
        stopLive();
        played = { result, visemes, track, face: undefined, curve: undefined };
        curves.begin(track.shapes.names);
        showWords(result);
        tell("search", `${Math.round(performance.now() - begin)} ms`);
        say(result.match ? `The text fits: ${result.match.verdict}.` : "The phonemes are heard.");
        await $("player").play().catch(() => {});
    } catch (error) {
        say(error.name === "AbortError" ? "Cancelled." : error.message);
    } finally {
        $("cancel").hidden = $("progress").hidden = true;
    }
});
$("cancel").addEventListener("click", () => search.abort());

function showWords({ words }) {
    $("words").replaceChildren(...words.map(({ text }) => {
        const item = document.createElement("li");
        item.textContent = text;
        return item;
    }));
}

function drawLive() {
    const shown = listening.live.weights();
    if (shown) {
        curves.add(shown.time, shown.weights);
        face.show(listening.forFace.shapes, listening.forFace.weights()?.weights);
        tell("delay", `${Math.round(listening.live.delayMs)} ms`);
    }
}

function drawPlayed() {
    const ms = $("player").currentTime * 1000;
    played.face = weightsAt(played.visemes, ms, played.face);
    played.curve = weightsAt(played.track, ms, played.curve);
    face.show(played.visemes.shapes, played.face);
    curves.add(ms / 1000, played.curve);
    [...$("words").children].forEach((item, i) => {
        const { startMs, endMs } = played.result.words[i];
        item.classList.toggle("now", startMs <= ms && ms < endMs);
    });
}

function draw() {
    if (listening) {
        drawLive();
    } else if (played) {
        drawPlayed();
    }
    curves.draw();
    requestAnimationFrame(draw);
}

const loading = performance.now();
try {
    engine = await Engine.load();
    tell("load", `${Math.round(performance.now() - loading)} ms`);
    say("Ready.");
} catch (error) {
    say(`The engine does not load: ${error.message}`);
    throw error;
}
draw();
globalThis.example = { engine, get listening() { return listening; }, get played() { return played; } };
