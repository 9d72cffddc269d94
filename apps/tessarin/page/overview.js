// The whole recording in one strip: where the words are, what part is on the screen.

class Overview {
    constructor(canvas, timeline) {
        this.canvas = canvas;
        this.timeline = timeline;
        this.strip = document.createElement("canvas");
    }

    resize() {
        const { width, height } = this.canvas.getBoundingClientRect();
        this.width = width;
        this.height = height;
        this.drawStrip();
    }

    // What does not move is drawn once.
    drawStrip() {
        const { recording, findings, theme, density, durationMs } = this.timeline;
        for (const canvas of [this.canvas, this.strip]) {
            canvas.width = Math.round(this.width * density);
            canvas.height = Math.round(this.height * density);
        }
        const context = this.strip.getContext("2d");
        context.scale(density, density);
        context.fillStyle = theme.accent;
        context.globalAlpha = 0.55;
        for (const { start_ms, end_ms } of findings.words) {
            const left = this.xOf(start_ms);
            const width = Math.max(0.5, this.xOf(end_ms) - left - 0.5);
            context.fillRect(left, this.height - 3, width, 3);
        }
        context.globalAlpha = 1;
        context.fillStyle = theme.wave;
        const half = (this.height / 2 - 3) * this.timeline.waveScale();
        const msPerPx = durationMs / this.width;
        for (let x = 0; x < this.width; ++x) {
            const [low, high] = recording.range(x * msPerPx, (x + 1) * msPerPx);
            context.fillRect(x, this.height / 2 - 1 - high * half, 1,
                Math.max(0.5, (high - low) * half));
        }
    }

    xOf(ms) {
        return (ms / this.timeline.durationMs) * this.width;
    }

    timeAt(x) {
        return clamp(x / this.width, 0, 1) * this.timeline.durationMs;
    }

    draw(cursorMs) {
        if (this.strip.width === 0 || this.strip.height === 0) {
            return; // the page is not shown
        }
        const { theme, fromMs, visibleMs, density, selection } = this.timeline;
        const context = this.canvas.getContext("2d");
        context.setTransform(1, 0, 0, 1, 0, 0);
        context.clearRect(0, 0, this.canvas.width, this.canvas.height);
        context.drawImage(this.strip, 0, 0);
        context.setTransform(density, 0, 0, density, 0, 0);
        if (selection) {
            context.fillStyle = theme.select;
            context.globalAlpha = 0.25;
            const left = this.xOf(selection.fromMs);
            context.fillRect(left, 0, Math.max(2, this.xOf(selection.toMs) - left), this.height);
        }
        const left = this.xOf(fromMs);
        const width = Math.max(6, this.xOf(fromMs + visibleMs) - left);
        context.globalAlpha = 0.1;
        context.fillStyle = theme.text;
        context.fillRect(left, 0, width, this.height);
        context.globalAlpha = 0.6;
        context.strokeStyle = theme.text;
        context.strokeRect(left + 0.5, 0.5, width - 1, this.height - 1);
        context.globalAlpha = 1;
        context.fillStyle = theme.cursor;
        context.fillRect(this.xOf(cursorMs) - 0.75, 0, 1.5, this.height);
    }
}
