// What the mouth shows: the frames that were found, as strong as the user wants them.

const NORMAL_STRENGTH = 1;

// Lips and teeth close or are missed, so no strength moves them.
const CLOSURES = ["closed", "teeth"];

// Rounded as in the JSON, the heaviest first.
function roundedWeights(entries) {
    const rounded = entries.map(([label, weight]) => [label, Math.round(weight * 1e4) / 1e4]);
    return Object.fromEntries(rounded.filter(([, weight]) => weight > 0)
        .sort((a, b) => b[1] - a[1]));
}

// Weights that leave rest `factor` times as far. What is missing to a sum of 1 is rest; what is too
// much is taken from all.
function strengthened(weights, factor) {
    if (factor === NORMAL_STRENGTH) {
        return weights;
    }
    const moving = Object.entries(weights).filter(([label]) => label !== "x").map(
        ([label, weight]) =>
            [label, CLOSURES.includes(CLASS_OF_LABEL[label]) ? weight : weight * factor]);
    const sum = moving.reduce((total, [, weight]) => total + weight, 0);
    const scale = 1 / Math.max(1, sum);
    return roundedWeights([
        ...moving.map(([label, weight]) => [label, weight * scale]), ["x", Math.max(0, 1 - sum)],
    ]);
}

function centreOf(span) {
    return (span.start_ms + span.end_ms) / 2;
}

function blended(from, to, share) {
    const weights = {};
    for (const label of new Set([...Object.keys(from), ...Object.keys(to)])) {
        weights[label] = (1 - share) * (from[label] ?? 0) + share * (to[label] ?? 0);
    }
    return weights;
}

// The weights at a time: those of a frame hold in its middle, and change evenly in between.
function weightsAt(frames, ms) {
    const index = clamp(lastBefore(frames, ms), 0, frames.length - 1);
    const here = centreOf(frames[index]);
    const other = frames[index + (ms < here ? -1 : 1)];
    if (!other || ms === here) {
        return frames[index].weights;
    }
    const share = Math.min(1, (ms - here) / (centreOf(other) - here));
    return blended(frames[index].weights, other.weights, share);
}

// A curve for each run of frames in which a label has weight, from 0 to 0.
function curvesOfFrames(frames) {
    const curves = [];
    const open = new Map();
    frames.forEach((frame, i) => {
        for (const [label, curve] of open) {
            curve.keys.push([centreOf(frame), frame.weights[label] ?? 0]);
            if (!(label in frame.weights)) {
                open.delete(label);
            }
        }
        for (const label of Object.keys(frame.weights)) {
            if (!open.has(label)) {
                const before = i > 0 ? [[centreOf(frames[i - 1]), 0]] : [];
                const keys = [...before, [centreOf(frame), frame.weights[label]]];
                open.set(label, { label, keys });
                curves.push(open.get(label));
            }
        }
    });
    return curves;
}

class Shown {
    constructor(findings) {
        this.findings = findings;
        this.sets = SHAPE_SETS.map((set) => new ShapeSet(set));
        this.strength = NORMAL_STRENGTH;
        this.set = null; // phonemes
        this.update();
    }

    setStrength(strength) {
        this.strength = strength;
        this.update();
    }

    // Shows the set of this name; phonemes where there is none.
    setShapes(name) {
        this.set = this.sets.find((set) => set.name === name) ?? null;
        this.update();
    }

    update() {
        const { set, strength } = this;
        const sounds = this.findings.frames.map(
            (frame) => ({ ...frame, weights: strengthened(frame.weights, strength) }));
        this.frames = sounds;
        this.mouthFrames = sounds;
        this.switches = null;
        if (set?.name === "switches") {
            this.showSwitches(shapesOfFrames(set, sounds));
        } else if (set) {
            this.frames = sounds.map((frame) => (
                { ...frame, weights: roundedWeights(Object.entries(set.mix(frame.weights))) }));
        }
        const known = !set && strength === NORMAL_STRENGTH ? this.findings.curves : [];
        this.rawCurves = known.length > 0 ? known : curvesOfFrames(this.frames);
        this.curves = this.rawCurves.map(({ label, keys }) => ({
            label, keys, fromMs: keys[0][0], toMs: keys.at(-1)[0],
            top: keys.reduce((top, key) => (key[1] > top[1] ? key : top)),
        }));
    }

    // One shape in each frame, and the mouth as its drawing.
    showSwitches(shapes) {
        const withWeights = (weightsOf) => this.frames.map(
            (frame, i) => ({ ...frame, weights: weightsOf(shapes[i]) }));
        this.mouthFrames = withWeights((shape) => ({ [SWITCH_MOUTHS[shape]]: 1 }));
        this.frames = withWeights((shape) => ({ [shape]: 1 }));
        this.switches = [];
        this.frames.forEach(({ start_ms, end_ms }, i) => {
            const last = this.switches.at(-1);
            if (last?.label === shapes[i]) {
                last.end_ms = end_ms;
            } else {
                this.switches.push({ start_ms, end_ms, label: shapes[i] });
            }
        });
    }

    // The kind of sounds that a label of what is shown has its colour from.
    classOf(label) {
        return (this.set ? this.set.classes : CLASS_OF_LABEL)[label] ?? "rest";
    }

    get restLabel() {
        return this.set ? this.set.rest : "x";
    }

    // The curves that may show between two times.
    curvesBetween(fromMs, toMs) {
        return this.curves.filter((curve) => curve.toMs >= fromMs && curve.fromMs <= toMs);
    }

    // The weights that the mouth is drawn by. A switch holds for all of its frame.
    mouthAt(ms) {
        const frames = this.mouthFrames;
        if (frames.length === 0) {
            return {};
        }
        return this.switches ? frames[this.findings.frameIndexAt(ms)].weights
            : weightsAt(frames, ms);
    }
}
