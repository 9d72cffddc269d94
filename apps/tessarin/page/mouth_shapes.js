// The key shapes of the drawn mouth. A shape is a flat list of numbers, the same for all: a mixture
// of shapes is the weighted sum of their lists, number by number.
//
// Drawn is the right half of a face seen from the front, mirrored to the left. A unit is 0.4 mm, y
// grows downwards, and 0 is where relaxed lips meet. All curves run from the middle to the side.

// Every curve with the number of its points: one to begin with, and three for each cubic piece.
const CURVES = [
    ["outerUpper", 7], ["innerUpper", 7], ["innerLower", 4], ["outerLower", 4],
    ["tongue", 4], ["tongueTip", 4],
];

// MOUTH is mouth_shapes.json: descriptions of the shapes, and which of them each phoneme shows.
// `corner` is the corner of the mouth; `dip` and `peak` are the edge of the upper lip, in the middle
// and at the bow beside it; `gap` is the opening in the middle, from upper to lower lip; `chin` is
// the edge of the lower lip; `jaw` is how far it has dropped; `round` leads from an almond (0) to an
// ellipse (1). The tongue has its height (`tongue`), the width of its back, and the height of a tip
// that comes over the lower teeth. The sheet of `view` draws the same shapes, by the same formulas,
// in drawn_mouth.cpp.
const HIDDEN = 120;

function outerCurves({ corner: [x, y], dip, peak, chin, round = 0 }) {
    const bow = Math.min(14, x * 0.26);
    const side = x - bow;
    return {
        outerUpper: [
            [0, dip], [bow * 0.4, dip], [bow * 0.5, peak], [bow, peak],
            [bow + side * (0.38 + 0.1 * round), peak],
            [x - side * 0.3 * (1 - round), y + (peak - y) * (0.3 + 0.3 * round)], [x, y],
        ],
        outerLower: [
            [0, chin], [x * (0.5 + 0.06 * round), chin],
            [x - x * 0.16 * (1 - round), y + (chin - y) * (0.45 + 0.1 * round)], [x, y],
        ],
    };
}

function innerCurves({ corner: [cornerX, y], gap: [top, bottom], round = 0 }) {
    const x = cornerX - 4 - 5 * round;
    const tubercle = 1.6 * (1 - round);
    const first = x * 0.34;
    const side = x - first;
    return {
        innerUpper: [
            [0, top + tubercle], [first * 0.5, top + tubercle], [first * 0.5, top], [first, top],
            [first + side * (0.3 + 0.16 * round), top],
            [x - side * 0.3 * (1 - round), y + (top - y) * (0.25 + 0.35 * round)], [x, y],
        ],
        innerLower: [
            [0, bottom], [x * (0.46 + 0.1 * round), bottom],
            [x - x * 0.2 * (1 - round), y + (bottom - y) * (0.35 + 0.2 * round)], [x, y],
        ],
    };
}

function dome(top, width) {
    return [[0, top], [width * 0.75, top], [width, top + 14], [width + 6, 140]];
}

// The list of a description: the points of all curves in their order, then the jaw.
function shapeOf(description) {
    const { jaw, tongue = 20 + jaw, back = 38, tip = HIDDEN } = description;
    const curves = {
        ...outerCurves(description),
        ...innerCurves(description),
        tongue: dome(tongue, back),
        tongueTip: dome(tip, 34),
    };
    return [...CURVES.flatMap(([name]) => curves[name].flat()), jaw];
}

const KEY_SHAPES = Object.fromEntries(
    Object.entries(MOUTH.shapes).map(([name, description]) => [name, shapeOf(description)]),
);

function weightedSum(parts) {
    const sum = new Array(KEY_SHAPES.rest.length).fill(0);
    for (const [shape, weight] of parts) {
        for (let i = 0; i < sum.length; ++i) {
            sum[i] += weight * shape[i];
        }
    }
    return sum;
}

const SHAPE_OF_PHONEME = Object.fromEntries(
    Object.entries(MOUTH.phonemes).map(([label, parts]) => [
        label, weightedSum(Object.entries(parts).map(([name, share]) => [KEY_SHAPES[name], share])),
    ]),
);

// The shape for the weights of a frame, by phoneme. What is missing to a sum of 1, as with a gain
// below 1, is a mouth at rest; a larger sum is scaled down, since a mouth cannot exceed its shapes.
function mixShapes(weights) {
    const parts = Object.entries(weights).filter(([label]) => label in SHAPE_OF_PHONEME);
    const total = parts.reduce((sum, [, weight]) => sum + weight, 0);
    const scale = total > 1 ? 1 / total : 1;
    return weightedSum([
        ...parts.map(([label, weight]) => [SHAPE_OF_PHONEME[label], weight * scale]),
        [KEY_SHAPES.rest, Math.max(0, 1 - total)],
    ]);
}
