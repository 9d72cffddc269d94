// The sets of mouth shapes that a track can be shown in. SHAPE_SETS is what the tool has built in:
// for each set its shapes, that of rest, those of closed lips, and what each phoneme shows.

// A phoneme that is drawn as the drawing of a switch.
const SWITCH_MOUTHS = {
    A: "m", B: "s", C: "EH", D: "AA", E: "OW", F: "UW", G: "f", H: "l", X: "x",
};

class ShapeSet {
    constructor({ set, shapes, closed, rest, phonemes }) {
        this.name = set;
        this.shapes = shapes;
        this.closed = closed;
        this.rest = rest;
        this.phonemes = phonemes;
        this.classes = Object.fromEntries(shapes.map((shape) => [shape, this.classOf(shape)]));
    }

    // The kind of sounds that show a shape most.
    classOf(shape) {
        const shares = Object.entries(this.phonemes).map(([label, parts]) =>
            [label, parts[shape] ?? 0]);
        const [label, share] = shares.reduce((a, b) => (b[1] > a[1] ? b : a));
        return share > 0 ? CLASS_OF_LABEL[label] : "rest";
    }

    // The weight of each shape for weights of phonemes.
    mix(weights) {
        const mixed = Object.fromEntries(this.shapes.map((shape) => [shape, 0]));
        for (const [label, weight] of Object.entries(weights)) {
            for (const [shape, share] of Object.entries(this.phonemes[label] ?? {})) {
                mixed[shape] += weight * share;
            }
        }
        for (const shape of this.shapes) {
            mixed[shape] = clamp(mixed[shape], 0, 1);
        }
        return mixed;
    }
}

// One shape at a time: the same search, with the same costs, as that of the library (shape_costs.cpp
// and switch_path.cpp), so that it can follow the strength.
const SHAPE_SEEN_MS = 50;
const PAUSE_MS = 60;
const CHANGE_COST = 0.4;
const REST_IN_WORD_COST = 4;
const LIPS_MISSED_COST = 8;
const LEAST_CLOSED = 0.1;
const LIPS_SHUT = 0.7;

function movingShares(set, frame) {
    const shares = set.mix(frame.weights);
    const rest = shares[set.rest];
    shares[set.rest] = 0;
    return { shares, rest, sum: Object.values(shares).reduce((sum, share) => sum + share, 0) };
}

// Whether each frame lies in a stretch of rest that is long enough for a pause.
function findPauses(frames, mixed) {
    const isPause = new Array(frames.length).fill(false);
    for (let begin = 0; begin < frames.length;) {
        let end = begin;
        while (end < frames.length && mixed[end].rest >= mixed[end].sum) {
            ++end;
        }
        const isAtEdge = begin === 0 || end === frames.length;
        if (end > begin &&
            (isAtEdge || frames[end - 1].end_ms - frames[begin].start_ms >= PAUSE_MS)) {
            isPause.fill(true, begin, end);
        }
        begin = end + 1;
    }
    return isPause;
}

function shapeCosts(set, { shares, rest, sum }, isPause) {
    const strongest = set.shapes.reduce((a, b) => (shares[b] > shares[a] ? b : a));
    const isClosed = set.closed.includes(strongest) && shares[strongest] >= LEAST_CLOSED;
    const counts = isPause && !isClosed;
    const whole = counts ? sum + rest : sum;
    const isShut = isClosed && shares[strongest] >= LIPS_SHUT * whole;
    return set.shapes.map((shape) => {
        const share = whole > 0 ? shares[shape] / whole : 0;
        const cost = shape !== set.rest ? 1 - share : counts ? 1 - rest / whole : REST_IN_WORD_COST;
        return cost + (isShut && !set.closed.includes(shape) ? LIPS_MISSED_COST : 0);
    });
}

// The number of the shape of each frame. Costs are those of every shape by frame; each shape lasts
// at least `least` frames.
function cheapestPath(costs, least) {
    const numShapes = costs[0]?.length ?? 0;
    const sums = new Array(numShapes).fill(0);
    let lasting = new Array(numShapes).fill(Infinity); // cost of paths that may leave their shape
    const steps = [];
    costs.forEach((now, frame) => {
        const begun = sums.map((sum, shape) => {
            let before = -1;
            for (let other = 0; other < numShapes; ++other) {
                if (other !== shape && (before < 0 || lasting[other] < lasting[before])) {
                    before = other;
                }
            }
            return { before, cost: (frame === 0 ? 0 : lasting[before] + CHANGE_COST) - sum };
        });
        now.forEach((cost, shape) => { sums[shape] += cost; });
        steps.push(begun.map(({ before, cost }) => ({ before, cost, hasCome: false })));
        lasting = lasting.map((cost, shape) => {
            const gone = cost + now[shape];
            const first = steps[frame + 1 - least]?.[shape];
            const come = first ? first.cost + sums[shape] : Infinity;
            steps[frame][shape].hasCome = come < gone;
            return Math.min(gone, come);
        });
    });
    const path = new Array(costs.length);
    let shape = lasting.indexOf(Math.min(...lasting));
    for (let end = path.length; end > 0;) {
        let last = end - 1;
        while (!steps[last][shape].hasCome) {
            --last;
        }
        const begin = last + 1 - least;
        path.fill(shape, begin, end);
        end = begin;
        shape = steps[begin][shape].before;
    }
    return path;
}

// The name of the shape that each frame shows.
function shapesOfFrames(set, frames) {
    if (frames.length === 0) {
        return [];
    }
    const frameMs = Math.max(frames[0].end_ms - frames[0].start_ms, 1);
    const mixed = frames.map((frame) => movingShares(set, frame));
    const isPause = findPauses(frames, mixed);
    const costs = mixed.map((shares, i) => shapeCosts(set, shares, isPause[i]));
    return cheapestPath(costs, Math.min(Math.ceil(SHAPE_SEEN_MS / frameMs), frames.length))
        .map((shape) => set.shapes[shape]);
}
