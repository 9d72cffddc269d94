// The spectrogram, computed in pieces when they are to be seen.

const FFT_SIZE = 256;
const WINDOW_MS = 12; // short enough to show bursts and the pulses of a voice
const RANGE_DB = 64; // from the loudest to what shows as background
const TILE_COLUMNS = 128;
const TILES_KEPT = 240;
const FINEST_STEP_MS = 2;

// In-place complex transform of a power of two, radix 2 (Cooley and Tukey).
function transform(re, im) {
    const n = re.length;
    for (let i = 1, j = 0; i < n; ++i) {
        let bit = n >> 1;
        for (; j & bit; bit >>= 1) {
            j ^= bit;
        }
        j ^= bit;
        if (i < j) {
            [re[i], re[j]] = [re[j], re[i]];
            [im[i], im[j]] = [im[j], im[i]];
        }
    }
    for (let size = 2; size <= n; size *= 2) {
        const half = size / 2;
        for (let k = 0; k < half; ++k) {
            const angle = (-2 * Math.PI * k) / size;
            const c = Math.cos(angle);
            const s = Math.sin(angle);
            for (let i = k; i < n; i += size) {
                const x = re[i + half] * c - im[i + half] * s;
                const y = re[i + half] * s + im[i + half] * c;
                re[i + half] = re[i] - x;
                im[i + half] = im[i] - y;
                re[i] += x;
                im[i] += y;
            }
        }
    }
}

class Spectrogram {
    constructor(recording) {
        this.samples = recording.samples;
        this.rate = recording.rate;
        this.bins = FFT_SIZE / 2;
        const length = Math.min(FFT_SIZE, Math.round((this.rate * WINDOW_MS) / 1000));
        this.window = Float64Array.from({ length }, (_, i) =>
            0.5 - 0.5 * Math.cos((2 * Math.PI * (i + 0.5)) / length));
        this.re = new Float64Array(FFT_SIZE);
        this.im = new Float64Array(FFT_SIZE);
        this.tiles = new Map(); // in the order of their use
        this.loudestDb = this.findLoudest();
        this.setColours([[255, 255, 255], [0, 0, 0]]);
    }

    // The levels in dB of the bins around a sample. The difference of neighbours lifts the weak
    // upper formants by 6 dB an octave.
    levels(centre) {
        const { re, im, samples, window } = this;
        re.fill(0);
        im.fill(0);
        const first = Math.round(centre - window.length / 2);
        for (let i = 0; i < window.length; ++i) {
            const at = first + i;
            if (at >= 1 && at < samples.length) {
                re[i] = (samples[at] - 0.95 * samples[at - 1]) * window[i];
            }
        }
        transform(re, im);
        const levels = new Float64Array(this.bins);
        for (let k = 0; k < this.bins; ++k) {
            levels[k] = 10 * Math.log10(re[k] * re[k] + im[k] * im[k] + 1);
        }
        return levels;
    }

    // Looked for in a few hundred places, which is enough for a scale.
    findLoudest() {
        let loudest = 60;
        for (let i = 0; i < 400; ++i) {
            const levels = this.levels((this.samples.length * (i + 0.5)) / 400);
            loudest = Math.max(loudest, ...levels);
        }
        return loudest;
    }

    // `stops` are the colours from the background to the loudest, evenly spaced.
    setColours(stops) {
        this.colours = Array.from({ length: 256 }, (_, i) => {
            const place = (i / 255) * (stops.length - 1);
            const index = Math.min(stops.length - 2, Math.floor(place));
            const share = place - index;
            return stops[index].map((c, k) => Math.round(c + share * (stops[index + 1][k] - c)));
        });
        this.tiles.clear();
    }

    makeTile(stepMs, index) {
        const canvas = document.createElement("canvas");
        canvas.width = TILE_COLUMNS;
        canvas.height = this.bins;
        const context = canvas.getContext("2d");
        const image = context.createImageData(TILE_COLUMNS, this.bins);
        for (let column = 0; column < TILE_COLUMNS; ++column) {
            const ms = (index * TILE_COLUMNS + column + 0.5) * stepMs;
            const levels = this.levels((ms / 1000) * this.rate);
            for (let k = 0; k < this.bins; ++k) {
                const share = (levels[k] - this.loudestDb + RANGE_DB) / RANGE_DB;
                const colour = this.colours[Math.round(255 * Math.max(0, Math.min(1, share)))];
                const at = 4 * ((this.bins - 1 - k) * TILE_COLUMNS + column);
                image.data.set(colour, at);
                image.data[at + 3] = 255;
            }
        }
        context.putImageData(image, 0, 0);
        return canvas;
    }

    // The tile if it is there, or made now when the time allows.
    tile(stepMs, index, mayMake) {
        const key = `${stepMs}/${index}`;
        const found = this.tiles.get(key) ?? (mayMake ? this.makeTile(stepMs, index) : undefined);
        if (found) {
            this.tiles.delete(key);
            this.tiles.set(key, found);
            if (this.tiles.size > TILES_KEPT) {
                this.tiles.delete(this.tiles.keys().next().value);
            }
        }
        return found;
    }

    // Draws the time from `fromMs` on with the given milliseconds a pixel into a box. Returns false
    // when it ran out of `budgetMs` and left gaps, to be called again.
    draw(context, { x, y, width, height }, fromMs, msPerPx, budgetMs) {
        let stepMs = FINEST_STEP_MS;
        while (stepMs * 2 <= msPerPx * 1.5) {
            stepMs *= 2;
        }
        const tileMs = stepMs * TILE_COLUMNS;
        const until = performance.now() + budgetMs;
        const last = Math.floor((fromMs + width * msPerPx) / tileMs);
        let whole = true;
        context.save();
        context.beginPath();
        context.rect(x, y, width, height);
        context.clip();
        for (let index = Math.max(0, Math.floor(fromMs / tileMs)); index <= last; ++index) {
            const tile = this.tile(stepMs, index, performance.now() < until);
            if (tile) {
                // Whole pixels leave no seams.
                const left = Math.round(x + (index * tileMs - fromMs) / msPerPx);
                const right = Math.round(x + ((index + 1) * tileMs - fromMs) / msPerPx);
                context.drawImage(tile, left, y, right - left, height);
            } else {
                whole = false;
            }
        }
        context.restore();
        return whole;
    }
}
