// The picture of the recording over time: what stands still on one canvas, what moves with the
// cursor on another above it. Only what is visible is drawn.

const LONGEST_PX_PER_MS = 4;
const NARROW_PX = 3; // a curve that is no wider is drawn as a line of its height
// For the spectrogram within one picture of the screen: while things move, and at first.
const SPECTRUM_BUDGET_MS = 12;
const FIRST_BUDGET_MS = 100;
const RULER_STEPS_MS = [
    10, 20, 50, 100, 200, 500, 1e3, 2e3, 5e3, 1e4, 2e4, 3e4, 6e4, 12e4, 3e5, 6e5,
];
const FONT = "system-ui, -apple-system, 'Segoe UI', Roboto, 'DejaVu Sans', sans-serif";

function clamp(value, low, high) {
    return Math.max(low, Math.min(high, value));
}

function clockText(ms, digits = 3) {
    const minutes = Math.floor(ms / 60000);
    const seconds = (ms - minutes * 60000) / 1000;
    return `${minutes}:${seconds.toFixed(digits).padStart(digits ? digits + 3 : 2, "0")}`;
}

// Heights in pixels from the top, for a canvas of that height.
function layOut(height, hasWords, hasMouths) {
    const row = height < 360 ? 24 : 30;
    const wordRow = hasWords ? row : 0;
    const mouthRow = hasMouths ? clamp(Math.round(height * 0.13), 38, 64) : 0;
    const mouthGap = hasMouths ? 6 : 0;
    const rest = height - 22 - wordRow - row - 3 * 6 - mouthRow - mouthGap;
    const wave = Math.round(rest * 0.2);
    const spectrum = Math.round(rest * 0.42);
    let y = 0;
    const lane = (size, gap) => {
        const box = { y, height: size };
        y += size + gap;
        return box;
    };
    return {
        ruler: lane(22, 0),
        wave: lane(wave, 0),
        spectrum: lane(spectrum, 6),
        words: lane(wordRow, hasWords ? 3 : 0),
        phonemes: lane(row, 9),
        curves: lane(height - y - mouthRow - mouthGap, mouthGap),
        mouths: lane(mouthRow, 0),
    };
}

class Timeline {
    constructor(still, moving, recording, shown) {
        this.still = still;
        this.moving = moving;
        this.recording = recording;
        this.shown = shown;
        this.findings = shown.findings;
        this.mouths = new MouthStrip(shown);
        this.spectrogram = new Spectrogram(recording);
        this.durationMs = Math.max(recording.durationMs, 1);
        this.fromMs = 0;
        this.pxPerMs = 0.2;
        this.selection = null;
        this.readTheme();
    }

    readTheme() {
        const style = getComputedStyle(document.documentElement);
        const colour = (name) => style.getPropertyValue(`--${name}`).trim();
        this.theme = {};
        const names = ["text", "muted", "line", "wave", "cursor", "select", "accent", "card",
            "unsure"];
        for (const name of names) {
            this.theme[name] = colour(name);
        }
        for (const { name } of SOUND_CLASSES) {
            this.theme[name] = colour(`sound-${name}`);
        }
        this.spectrogram.setColours(
            colour("spectrum").split(",").map((stop) => stop.trim().split(" ").map(Number)));
        this.waitsForDraw = true;
    }

    colourOf(label) {
        return this.theme[CLASS_OF_LABEL[label] ?? "rest"];
    }

    colourOfShown(label) {
        return this.theme[this.shown.classOf(label)];
    }

    resize() {
        const { width, height } = this.still.getBoundingClientRect();
        const density = window.devicePixelRatio || 1;
        for (const canvas of [this.still, this.moving]) {
            canvas.width = Math.round(width * density);
            canvas.height = Math.round(height * density);
        }
        this.width = width;
        this.height = height;
        this.density = density;
        this.lanes = layOut(height, this.findings.words.length > 0,
            this.findings.frames.length > 0);
        this.budgetMs = FIRST_BUDGET_MS;
        this.setView(this.fromMs, this.pxPerMs);
    }

    get msPerPx() {
        return 1 / this.pxPerMs;
    }

    get visibleMs() {
        return this.width / this.pxPerMs;
    }

    setView(fromMs, pxPerMs) {
        const least = this.width / this.durationMs;
        this.pxPerMs = clamp(pxPerMs, least, Math.max(least, LONGEST_PX_PER_MS));
        this.fromMs = clamp(fromMs, 0, Math.max(0, this.durationMs - this.visibleMs));
        this.waitsForDraw = true;
    }

    // Zooms so that the time at `x` stays where it is.
    zoom(factor, x) {
        const ms = this.timeAt(x);
        const pxPerMs = clamp(this.pxPerMs * factor, this.width / this.durationMs,
            LONGEST_PX_PER_MS);
        this.setView(ms - x / pxPerMs, pxPerMs);
    }

    timeAt(x) {
        return clamp(this.fromMs + x * this.msPerPx, 0, this.durationMs);
    }

    xOf(ms) {
        return (ms - this.fromMs) * this.pxPerMs;
    }

    isVisible(ms) {
        return ms >= this.fromMs && ms <= this.fromMs + this.visibleMs;
    }

    // Draws what has changed. Called once for each picture of the screen. A page that is not shown
    // has no size; what waits is drawn when it gets one.
    draw(cursorMs) {
        if (this.still.width === 0 || this.still.height === 0) {
            return;
        }
        if (this.waitsForDraw) {
            this.waitsForDraw = false;
            this.drawStill();
        }
        this.drawMoving(cursorMs);
    }

    begin(canvas) {
        const context = canvas.getContext("2d");
        context.setTransform(this.density, 0, 0, this.density, 0, 0);
        context.clearRect(0, 0, this.width, this.height);
        return context;
    }

    drawStill() {
        const context = this.begin(this.still);
        const lanes = this.lanes;
        this.drawRuler(context, lanes.ruler);
        this.drawWave(context, lanes.wave);
        this.drawSpectrum(context, lanes.spectrum);
        this.drawBoundaries(context, this.findings.phonemes, lanes.wave, lanes.spectrum);
        if (this.shown.switches) {
            this.drawSpans(context, this.shown.switches, lanes.curves, 15, ({ label }) => ({
                text: label, colour: this.colourOfShown(label),
                fill: label === this.shown.restLabel ? 0.1 : 0.28,
            }));
        } else {
            this.drawCurves(context, lanes.curves);
        }
        this.mouths.draw(context, this, lanes.mouths);
        if (lanes.words.height > 0) {
            this.drawEvents(context, lanes.words);
        }
        this.drawSpans(context, this.findings.words, lanes.words, 13, (word) => ({
            text: word.text, fill: isUnsure(word) ? 0.3 : 0.13,
            colour: isUnsure(word) ? this.theme.unsure : this.theme.accent,
        }));
        this.drawSpans(context, this.findings.phonemes, lanes.phonemes, 12, ({ label }) => ({
            text: label === "x" ? "" : label, colour: this.colourOf(label),
            fill: label === "x" ? 0.1 : 0.28,
        }));
    }

    drawRuler(context, lane) {
        const step = RULER_STEPS_MS.find((ms) => ms * this.pxPerMs >= 70) ?? 12e5;
        const digits = step < 100 ? 2 : step < 1000 ? 1 : 0;
        context.font = `11px ${FONT}`;
        context.textBaseline = "middle";
        context.textAlign = "left";
        const last = Math.min(this.durationMs, this.fromMs + this.visibleMs);
        for (let i = Math.floor(this.fromMs / (step / 5)); i * (step / 5) <= last; ++i) {
            const x = this.xOf((i * step) / 5);
            const isMajor = i % 5 === 0;
            context.fillStyle = this.theme.line;
            context.fillRect(x, lane.y + (isMajor ? 4 : 15), 1, lane.height - (isMajor ? 4 : 15));
            if (isMajor) {
                context.fillStyle = this.theme.muted;
                context.fillText(clockText((i * step) / 5, digits), x + 4, lane.y + 9);
            }
        }
    }

    drawWave(context, lane) {
        const middle = lane.y + lane.height / 2;
        const half = (lane.height / 2) * 0.94 * this.waveScale();
        context.fillStyle = this.theme.wave;
        const last = Math.min(this.width, this.xOf(this.durationMs));
        const step = 1 / this.density;
        for (let x = 0; x < last; x += step) {
            const from = this.fromMs + x * this.msPerPx;
            const [low, high] = this.recording.range(from, from + step * this.msPerPx);
            context.fillRect(x, middle - high * half, step, Math.max(step, (high - low) * half));
        }
    }

    // Quiet recordings are drawn larger.
    waveScale() {
        const [low, high] = this.recording.range(0, this.durationMs);
        return 1 / Math.max(0.05, -low, high);
    }

    drawSpectrum(context, lane) {
        const whole = this.spectrogram.draw(context,
            { x: 0, y: lane.y, width: this.width, height: lane.height }, this.fromMs, this.msPerPx,
            this.budgetMs);
        this.budgetMs = SPECTRUM_BUDGET_MS;
        this.waitsForDraw ||= !whole;
        context.font = `10px ${FONT}`;
        context.textAlign = "right";
        context.textBaseline = "middle";
        for (let khz = 2; khz * 1000 < this.recording.rate / 2; khz += 2) {
            const y = lane.y + lane.height * (1 - (khz * 2000) / this.recording.rate);
            context.fillStyle = this.theme.muted;
            context.fillRect(this.width - 5, y, 5, 1);
            context.strokeStyle = this.theme.card;
            context.lineWidth = 3;
            context.lineJoin = "round";
            context.strokeText(`${khz} kHz`, this.width - 8, y);
            context.fillText(`${khz} kHz`, this.width - 8, y);
        }
    }

    // The spans that show, without those that would cover no pixel of their own.
    *visibleSpans(spans) {
        let lastX = -1;
        for (let i = Math.max(0, lastBefore(spans, this.fromMs)); i < spans.length; ++i) {
            const left = this.xOf(spans[i].start_ms);
            const right = this.xOf(spans[i].end_ms);
            if (left > this.width) {
                return;
            }
            if (right >= 0 && right - lastX >= 0.5) {
                lastX = right;
                yield { span: spans[i], left, right };
            }
        }
    }

    drawBoundaries(context, spans, first, last) {
        context.fillStyle = this.theme.text;
        context.globalAlpha = clamp((this.pxPerMs - 0.08) * 2, 0, 0.28);
        for (const { left } of this.visibleSpans(spans)) {
            context.fillRect(left, first.y, 1, last.y + last.height - first.y);
        }
        context.globalAlpha = 1;
    }

    drawSpans(context, spans, lane, size, look) {
        context.font = `${size}px ${FONT}`;
        context.textAlign = "center";
        context.textBaseline = "middle";
        for (const { span, left, right } of this.visibleSpans(spans)) {
            const { text, colour, fill } = look(span);
            const width = right - left;
            const gap = width > 4 ? 0.75 : 0;
            context.fillStyle = colour;
            context.globalAlpha = fill;
            context.beginPath();
            context.roundRect(left + gap, lane.y, Math.max(0.5, width - 2 * gap), lane.height,
                Math.min(4, width / 3));
            context.fill();
            context.globalAlpha = 1;
            if (width > 6) {
                context.fillRect(left + gap, lane.y + lane.height - 2.5, width - 2 * gap, 2.5);
            }
            if (width > 8) {
                this.drawLabel(context, text, left, right, lane);
            }
        }
    }

    // A label in the visible part of its box, left away where it does not fit.
    drawLabel(context, text, left, right, lane) {
        const from = Math.max(left, 0);
        const to = Math.min(right, this.width);
        if (context.measureText(text).width <= to - from - 2) {
            context.fillStyle = this.theme.text;
            context.fillText(text, (from + to) / 2, lane.y + lane.height / 2 - 0.5);
        }
    }

    drawEvents(context, lane) {
        context.font = `12px ${FONT}`;
        context.textAlign = "center";
        context.textBaseline = "middle";
        for (const { span, left, right } of this.visibleSpans(this.findings.events)) {
            if (span.type === "unscripted") {
                context.fillStyle = this.theme.unsure;
                context.globalAlpha = 0.3;
                context.fillRect(left, lane.y, right - left, lane.height);
            }
            context.fillStyle = this.theme.muted;
            context.globalAlpha = 0.75;
            if (right - left > context.measureText(span.text).width) {
                context.fillText(span.text, (left + right) / 2, lane.y + lane.height / 2);
            }
        }
        context.globalAlpha = 1;
    }

    drawCurves(context, lane) {
        context.fillStyle = this.theme.line;
        for (const share of [0, 0.5, 1]) {
            context.fillRect(0, Math.round(this.yOf(share, lane)), this.width, 1);
        }
        context.save();
        context.beginPath();
        context.rect(0, lane.y, this.width, lane.height);
        context.clip();
        const to = this.fromMs + this.visibleMs;
        const curves = this.shown.curvesBetween(this.fromMs, to);
        // Rest lies behind the sounds.
        const isRest = ({ label }) => label === this.shown.restLabel;
        const sounds = curves.filter((curve) => !isRest(curve));
        for (const curve of [...curves.filter(isRest), ...sounds]) {
            this.drawCurve(context, curve, lane);
        }
        this.labelCurves(context, sounds, lane);
        context.restore();
    }

    yOf(weight, lane) {
        return lane.y + lane.height - 2 - weight * (lane.height - 12);
    }

    drawCurve(context, { label, keys, fromMs, toMs, top }, lane) {
        const isRest = label === this.shown.restLabel;
        const colour = this.colourOfShown(label);
        const base = this.yOf(0, lane);
        if ((toMs - fromMs) * this.pxPerMs < NARROW_PX) {
            context.fillStyle = colour;
            context.globalAlpha = isRest ? 0.2 : 0.5;
            const y = this.yOf(top[1], lane);
            context.fillRect(this.xOf(top[0]) - 0.5, y, 1, base - y);
            context.globalAlpha = 1;
            return;
        }
        context.beginPath();
        for (const [ms, weight] of keys) {
            context.lineTo(this.xOf(ms), this.yOf(weight, lane));
        }
        context.strokeStyle = colour;
        context.lineWidth = isRest ? 1 : 1.6;
        context.globalAlpha = isRest ? 0.5 : 1;
        context.stroke();
        context.lineTo(this.xOf(toMs), base);
        context.lineTo(this.xOf(fromMs), base);
        context.fillStyle = colour;
        context.globalAlpha = isRest ? 0.08 : 0.17;
        context.fill();
        context.globalAlpha = 1;
    }

    // Labels over the tops of the curves, the strongest first where they would overlap.
    labelCurves(context, curves, lane) {
        context.font = `11px ${FONT}`;
        context.textAlign = "center";
        context.textBaseline = "bottom";
        const isWide = ({ fromMs, toMs }) => (toMs - fromMs) * this.pxPerMs > 26;
        const labels = curves.filter((curve) => isWide(curve) && curve.top[1] > 0.12)
            .map(({ label, top: [ms, weight] }) => {
                const y = Math.max(lane.y + 12, this.yOf(weight, lane) - 2);
                const half = context.measureText(label).width / 2 + 2;
                return { label, weight, x: this.xOf(ms), y, half };
            });
        const placed = [];
        for (const each of labels.sort((a, b) => b.weight - a.weight)) {
            const isFree = placed.every(({ x, y, half }) =>
                Math.abs(x - each.x) > half + each.half || Math.abs(y - each.y) > 12);
            if (isFree) {
                placed.push(each);
                context.fillStyle = this.colourOfShown(each.label);
                context.fillText(each.label, each.x, each.y);
            }
        }
    }

    drawMoving(cursorMs) {
        const context = this.begin(this.moving);
        if (this.selection) {
            const left = this.xOf(this.selection.fromMs);
            const width = this.xOf(this.selection.toMs) - left;
            context.fillStyle = this.theme.select;
            context.globalAlpha = 0.16;
            context.fillRect(left, 0, width, this.height);
            context.globalAlpha = 0.9;
            context.fillRect(left, 0, 1.5, this.height);
            context.fillRect(left + width - 1.5, 0, 1.5, this.height);
            context.globalAlpha = 1;
        }
        const { words, phonemes, frames } = this.findings;
        this.outline(context, words[indexAt(words, cursorMs)], this.lanes.words);
        this.outline(context, phonemes[indexAt(phonemes, cursorMs)], this.lanes.phonemes);
        if (frames.length > 0) {
            this.outline(context, this.mouths.cellAt(cursorMs, this, this.lanes.mouths),
                this.lanes.mouths);
        }
        const x = this.xOf(cursorMs);
        context.fillStyle = this.theme.cursor;
        context.fillRect(x - 0.75, 0, 1.5, this.height);
        context.beginPath();
        context.moveTo(x - 6, 0);
        context.lineTo(x + 6, 0);
        context.lineTo(x, 8);
        context.fill();
    }

    outline(context, span, lane) {
        if (!span) {
            return;
        }
        const left = this.xOf(span.start_ms);
        const width = Math.max(2, this.xOf(span.end_ms) - left);
        context.strokeStyle = this.theme.cursor;
        context.lineWidth = 1.5;
        context.beginPath();
        context.roundRect(left, lane.y, width, lane.height, Math.min(4, width / 3));
        context.stroke();
    }
}
