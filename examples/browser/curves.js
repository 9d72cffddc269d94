// The weights of the last seconds, a row for each shape that was used lately.

const SECONDS = 4;
const MOST_ROWS = 16;

export class Curves {
    constructor(canvas) {
        this.canvas = canvas;
        this.context = canvas.getContext("2d");
        this.begin([]);
    }

    begin(names) {
        this.names = names;
        this.points = []; // { time, weights }
    }

    add(time, weights) {
        const last = this.points.at(-1);
        if (last && time < last.time) {
            this.points = []; // the recording was wound back
        }
        if (!last || time > last.time) {
            this.points.push({ time, weights: weights.slice() });
            while (this.points[0].time < time - SECONDS) {
                this.points.shift();
            }
        }
    }

    /** Of a large set, the shapes that move most, in their order. */
    #rows() {
        const numbers = this.names.map((_, i) => i);
        if (numbers.length <= MOST_ROWS) {
            return numbers;
        }
        const sum = (i) => this.points.reduce((total, { weights }) => total + weights[i], 0);
        const sums = numbers.map(sum);
        return numbers.sort((a, b) => sums[b] - sums[a]).slice(0, MOST_ROWS).sort((a, b) => a - b);
    }

    draw() {
        const { canvas, context } = this;
        const ratio = devicePixelRatio;
        const [width, height] = [canvas.clientWidth, canvas.clientHeight];
        if (canvas.width !== Math.round(width * ratio) || canvas.height !== Math.round(height * ratio)) {
            canvas.width = Math.round(width * ratio);
            canvas.height = Math.round(height * ratio);
        }
        const style = getComputedStyle(canvas);
        context.setTransform(ratio, 0, 0, ratio, 0, 0);
        context.clearRect(0, 0, width, height);
        context.font = `12px ${style.fontFamily}`;
        context.textBaseline = "middle";
        const rows = this.#rows();
        const label = Math.max(0, ...rows.map((i) => context.measureText(this.names[i]).width)) + 10;
        const until = this.points.at(-1)?.time ?? 0;
        const x = (time) => label + (1 - (until - time) / SECONDS) * (width - label);
        const rowHeight = height / Math.max(rows.length, 1);
        rows.forEach((shape, row) => {
            const base = (row + 1) * rowHeight - 3;
            context.fillStyle = style.color;
            context.fillText(this.names[shape], 0, base - rowHeight / 2 + 3);
            context.strokeStyle = style.getPropertyValue("--line");
            context.beginPath();
            context.moveTo(label, base);
            context.lineTo(width, base);
            context.stroke();
            context.fillStyle = `hsl(${(shape * 137) % 360} 55% 50%)`;
            context.beginPath();
            context.moveTo(label, base);
            for (const { time, weights } of this.points) {
                context.lineTo(x(time), base - weights[shape] * (rowHeight - 6));
            }
            context.lineTo(x(until), base);
            context.fill();
        });
    }
}
