// Joins the parts of the page.

const SPEEDS = [0.25, 0.5, 0.75, 1];
const FIRST_PX_PER_MS = 0.2;

const byId = (id) => document.getElementById(id);

class Page {
    constructor() {
        const result = JSON.parse(byId("result").textContent);
        const chunks = [...document.querySelectorAll("script.audio")];
        this.recording = new Recording(joined(decodeBase64(chunks.map((c) => c.textContent))));
        chunks.forEach((chunk) => chunk.remove());
        this.findings = new Findings(result);
        this.boundaries = new Boundaries(this.findings);
        this.shown = new Shown(this.findings);
        this.player = new Player(byId("audio"), this.recording);
        this.timeline = new Timeline(byId("still"), byId("moving"), this.recording, this.shown);
        this.overview = new Overview(byId("overview"), this.timeline);
        this.mouth = new Mouth(byId("mouth"));
        this.loops = false;
        this.wasVisible = true;
        this.reported = new Set();
        this.makeReadout();
        this.showSummary(result);
        this.listen();
        this.resize();
        this.timeline.setView(0, FIRST_PX_PER_MS);
        this.showState();
        requestAnimationFrame(() => this.tick());
    }

    makeReadout() {
        const names = ["time", "word", "wordTime", "confidence", "phoneme", "phonemeTime", "score", "frame",
            "frameTime", "mouthWords", "weights", "weightRow"];
        this.readout = new Readout(this.shown,
            Object.fromEntries(names.map((name) => [name, byId(name)])),
            (label) => this.timeline.colourOfShown(label));
        this.transcript = new Transcript(byId("transcript"), this.findings, (word) => {
            this.player.seek(word.start_ms);
            this.showCursor();
        });
        for (const { name, title } of SOUND_CLASSES) {
            const entry = document.createElement("li");
            entry.style.setProperty("--colour", `var(--sound-${name})`);
            entry.textContent = title;
            byId("legend").append(entry);
        }
    }

    showSummary(result) {
        const { words, phonemes, frames } = this.findings;
        const sounds = phonemes.filter(({ label }) => label !== "x").length;
        const rate = frames.length > 1
            ? Math.round((frames.length * 1000) / (frames.at(-1).end_ms - frames[0].start_ms)) : 0;
        byId("summary").textContent = [
            `${(this.recording.durationMs / 1000).toFixed(1)} s`,
            words.length && `${words.length} words`, `${sounds} phonemes`,
            rate && `${rate} frames a second`,
            result.match && `match ${result.match.verdict}`,
        ].filter(Boolean).join(" · ");
        byId("duration").textContent = clockText(this.recording.durationMs, 1);
        const warning = result.code ? `${result.message} (code ${result.code})`
            : result.match?.verdict !== "good" ? result.match?.reason : "";
        byId("warning").hidden = !warning;
        byId("warning").textContent = warning ?? "";
    }

    listen() {
        this.player.onChange = () => this.showState();
        new Pointing(byId("timeline"), this.timeline, {
            seek: (ms) => this.player.seek(ms),
            select: (a, b) => this.select(Math.min(a, b), Math.max(a, b)),
            selectAt: (ms, y) => this.selectAt(ms, y),
            edgeAt: (place, reachPx) => this.edgeAt(place, reachPx),
            beginEdge: (edge) => this.beginEdge(edge),
            moveEdge: (edge, ms) => this.moveEdge(edge, ms),
            endEdge: () => this.endEdge(),
        });
        byId("overview").addEventListener("pointerdown", (event) => this.dragOverview(event));
        byId("overview").addEventListener("pointermove", (event) => this.dragOverview(event));
        // A canvas that changes its size is empty until it is drawn, and a page whose picture is
        // taken at once gets no other chance.
        new ResizeObserver(() => {
            this.resize();
            this.draw();
        }).observe(byId("timeline"));
        matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => {
            this.timeline.readTheme();
            this.overview.resize();
            this.readout.shown = "";
        });
        byId("strength").addEventListener("input",
            () => this.setStrength(Number(byId("strength").value)));
        // Else the arrows would move it in place of the cursor.
        byId("strength").addEventListener("pointerup", () => byId("strength").blur());
        document.addEventListener("keydown", (event) => this.pressKey(event));
        for (const button of document.querySelectorAll("button[data-action]")) {
            button.addEventListener("click", (event) => {
                this.act(button.dataset.action, button.value);
                // Else the space bar would press it again in place of playing.
                if (event.detail > 0) {
                    button.blur();
                }
            });
        }
    }

    pressKey(event) {
        const isTyping = event.target.closest?.("dialog, button:focus-visible");
        const isSliding = event.target === byId("strength") && event.key !== " ";
        if (event.key === "z" && (event.ctrlKey || event.metaKey)) {
            event.preventDefault();
            this.act("undo");
        }
        if (isSliding || event.ctrlKey || event.metaKey || event.altKey ||
            (isTyping && [" ", "Enter", "Escape"].includes(event.key))) {
            return;
        }
        const action = KEYS[event.shiftKey ? `Shift+${event.key}` : event.key] ?? KEYS[event.key];
        if (action) {
            event.preventDefault();
            this.act(...action);
        }
    }

    act(name, value) {
        const { timeline, player } = this;
        const middle = timeline.isVisible(player.positionMs) ? timeline.xOf(player.positionMs)
            : timeline.width / 2;
        const actions = {
            play: () => player.toggle(),
            speed: () => player.setSpeed(Number(value)),
            frame: () => this.stepFrames(Number(value)),
            phoneme: () => this.stepSpans(this.findings.phonemes, Number(value)),
            word: () => this.stepSpans(this.findings.words.length ? this.findings.words
                : this.findings.phonemes, Number(value)),
            go: () => this.goTo(Number(value) * this.recording.durationMs),
            zoom: () => timeline.zoom(Number(value), middle),
            all: () => timeline.setView(0, 0),
            loop: () => this.setLoops(!this.loops),
            strength: () => this.setStrength(Number(value)),
            shapes: () => this.setShapes(value),
            csv: () => this.save("csv", "text/csv", shownCsv(this.shown)),
            json: () => this.save("json", "application/json", shownJson(this.shown)),
            selectWord: () => this.selectSpan(this.findings.words, player.positionMs),
            clear: () => this.clearSelection(),
            undo: () => this.undo(),
            nudge: () => this.nudge(Number(value)),
            help: () => byId("help").showModal(),
        };
        actions[name]();
    }

    goTo(ms) {
        this.player.seek(ms);
        this.showCursor();
    }

    // To the middle of a frame, where its weights hold.
    stepFrames(count) {
        const { frames } = this.findings;
        if (frames.length > 0) {
            const index = this.findings.frameIndexAt(this.player.positionMs) + count;
            this.goTo(centreOf(frames[clamp(index, 0, frames.length - 1)]));
        }
    }

    stepSpans(spans, count) {
        if (spans.length === 0) {
            return;
        }
        const ms = this.player.positionMs;
        let index = lastBefore(spans, ms) + count;
        // Backwards, first to the beginning of the span itself.
        if (count < 0 && ms > (spans[index + 1]?.start_ms ?? 0) + 1) {
            ++index;
        }
        this.goTo(spans[clamp(index, 0, spans.length - 1)].start_ms);
    }

    showCursor() {
        const { timeline } = this;
        if (!timeline.isVisible(this.player.positionMs)) {
            timeline.setView(this.player.positionMs - timeline.visibleMs / 3, timeline.pxPerMs);
        }
    }

    select(fromMs, toMs) {
        this.timeline.selection = { fromMs, toMs };
        this.player.setLoop(this.loops && toMs - fromMs >= 20 ? this.timeline.selection : null);
        this.showState();
    }

    selectSpan(spans, ms) {
        const span = spans[indexAt(spans, ms)];
        if (span) {
            this.select(span.start_ms, span.end_ms);
            this.setLoops(true);
        }
        return Boolean(span);
    }

    // In the rows of the phonemes and the curves a phoneme, else a word.
    selectAt(ms, y) {
        const isPhoneme = y >= this.timeline.lanes.phonemes.y;
        if (isPhoneme || !this.selectSpan(this.findings.words, ms)) {
            this.selectSpan(this.findings.phonemes, ms);
        }
        this.player.seek(this.timeline.selection?.fromMs ?? ms);
    }

    // In the rows of the words and of the phonemes, a boundary that can be taken hold of.
    edgeAt({ x, y }, reachPx) {
        const { lanes } = this.timeline;
        const isIn = (lane) => y >= lane.y && y < lane.y + lane.height;
        const isOfWord = isIn(lanes.words);
        return isOfWord || isIn(lanes.phonemes)
            ? this.boundaries.nearest(this.timeline.timeAt(x), reachPx * this.timeline.msPerPx,
                isOfWord)
            : -1;
    }

    beginEdge(edge) {
        this.boundaries.begin(edge);
        return this.boundaries.times[edge];
    }

    moveEdge(edge, ms) {
        this.boundaries.move(edge, ms);
        this.player.seek(this.boundaries.times[edge]);
        this.timeline.waitsForDraw = true;
    }

    endEdge() {
        this.boundaries.end();
        this.showMoved();
    }

    undo() {
        this.boundaries.undo();
        this.showMoved();
    }

    // Moves the beginning of the phoneme at the cursor, which goes with it.
    nudge(ms) {
        const { phonemes } = this.findings;
        // A player may stand a little before the time that it was sent to.
        const index = lastBefore(phonemes, this.player.positionMs + 1);
        const { start_ms } = phonemes[Math.max(0, index)];
        const edge = this.boundaries.at(start_ms);
        if (edge > 0) {
            this.beginEdge(edge);
            this.moveEdge(edge, start_ms + ms);
            this.endEdge();
            this.showCursor();
        }
    }

    showMoved() {
        this.shown.update();
        this.timeline.waitsForDraw = true;
        this.readout.shown = "";
        this.showState();
    }

    clearSelection() {
        this.timeline.selection = null;
        this.setLoops(false);
    }

    // A loop needs a stretch: without one, the word at the cursor, or all of it.
    setLoops(loops) {
        this.loops = loops;
        if (loops && !this.timeline.selection) {
            const word = this.findings.words[indexAt(this.findings.words, this.player.positionMs)];
            this.timeline.selection = {
                fromMs: word?.start_ms ?? 0, toMs: word?.end_ms ?? this.recording.durationMs,
            };
        }
        this.player.setLoop(loops ? this.timeline.selection : null);
        this.showState();
    }

    setStrength(strength) {
        this.shown.setStrength(strength);
        this.timeline.waitsForDraw = true;
        this.showState();
    }

    setShapes(name) {
        this.shown.setShapes(name);
        this.timeline.waitsForDraw = true;
        this.showState();
    }

    // Under the name of the recording, with what it holds.
    save(ending, type, text) {
        const name = document.title.replace(/\.[^.]*$/, "");
        saveFile(`${name}.${this.shown.set?.name ?? "phonemes"}.${ending}`, type, text);
    }

    dragOverview(event) {
        if (event.buttons !== 1 && event.type !== "pointerdown") {
            return;
        }
        byId("overview").setPointerCapture(event.pointerId);
        const { timeline, overview } = this;
        const x = event.clientX - byId("overview").getBoundingClientRect().left;
        const ms = overview.timeAt(x);
        timeline.setView(ms - timeline.visibleMs / 2, timeline.pxPerMs);
    }

    resize() {
        this.timeline.resize();
        this.overview.resize();
    }

    // Buttons and labels, when something else than the position has changed.
    showState() {
        const { player, timeline } = this;
        const play = byId("play");
        play.classList.toggle("playing", player.isPlaying);
        play.setAttribute("aria-label", player.isPlaying ? "Pause" : "Play");
        byId("loop").setAttribute("aria-pressed", String(this.loops));
        for (const button of document.querySelectorAll("button[data-action=speed]")) {
            const isIt = Number(button.value) === player.audio.playbackRate;
            button.setAttribute("aria-pressed", String(isIt));
        }
        this.showStrength();
        this.showShapes();
        const { count } = this.boundaries;
        byId("moved").hidden = this.boundaries.past.length === 0;
        byId("movedText").textContent = `${count} ${count === 1 ? "boundary" : "boundaries"} moved`;
        const { selection } = timeline;
        byId("selection").hidden = !selection;
        byId("selectionText").textContent = selection
            ? `${Math.round(selection.fromMs)}–${Math.round(selection.toMs)} ms` : "";
        const slider = byId("timeline");
        slider.setAttribute("aria-valuemax", String(Math.round(this.recording.durationMs)));
        slider.setAttribute("aria-valuenow", String(Math.round(player.positionMs)));
        slider.setAttribute("aria-valuetext", this.readout.describe(player.positionMs));
    }

    showStrength() {
        const { strength } = this.shown;
        byId("strength").value = strength;
        byId("strengthNumber").textContent = strength.toFixed(2);
        for (const button of document.querySelectorAll("button[data-action=strength]")) {
            button.setAttribute("aria-pressed", String(Number(button.value) === strength));
        }
    }

    showShapes() {
        for (const button of document.querySelectorAll("button[data-action=shapes]")) {
            const isIt = button.value === (this.shown.set?.name ?? "");
            button.setAttribute("aria-pressed", String(isIt));
        }
    }

    // Turns the page under a cursor that runs off its right edge.
    follow(ms) {
        const { timeline } = this;
        const isVisible = timeline.isVisible(ms);
        if (this.player.isPlaying && this.wasVisible && !isVisible) {
            timeline.setView(ms - timeline.visibleMs * 0.08, timeline.pxPerMs);
        }
        this.wasVisible = timeline.isVisible(ms);
    }

    tick() {
        requestAnimationFrame(() => this.tick()); // first, so that no failure ends the loop
        this.player.keepInLoop();
        this.follow(this.player.positionMs);
        this.draw();
    }

    // Each part by itself, so that one that fails does not keep the others from it.
    draw() {
        const ms = this.player.positionMs;
        for (const draw of [
            () => this.timeline.draw(ms),
            () => this.overview.draw(ms),
            () => this.mouth.show(this.shown.mouthAt(ms)),
            () => this.readout.show(ms),
            () => this.transcript.show(ms),
        ]) {
            try {
                draw();
            } catch (error) {
                this.report(error);
            }
        }
    }

    // A part that fails does so sixty times a second; once is enough to read.
    report(error) {
        if (!this.reported.has(error.message)) {
            this.reported.add(error.message);
            reportError(error);
        }
    }
}

const KEYS = {
    " ": ["play"],
    "ArrowLeft": ["frame", -1],
    "ArrowRight": ["frame", 1],
    "Shift+ArrowLeft": ["phoneme", -1],
    "Shift+ArrowRight": ["phoneme", 1],
    "ArrowUp": ["word", -1],
    "ArrowDown": ["word", 1],
    "Home": ["go", 0],
    "End": ["go", 1],
    "+": ["zoom", 1.5],
    "=": ["zoom", 1.5],
    "-": ["zoom", 1 / 1.5],
    "0": ["all"],
    "l": ["loop"],
    "L": ["loop"],
    "w": ["selectWord"],
    "W": ["selectWord"],
    "u": ["undo"],
    "U": ["undo"],
    "[": ["nudge", -5],
    "]": ["nudge", 5],
    "Escape": ["clear"],
    "?": ["help"],
    ...Object.fromEntries(SPEEDS.map((speed, i) => [String(i + 1), ["speed", speed]])),
};

// For those who look into the page, and for its test.
window.tessarin = new Page();
