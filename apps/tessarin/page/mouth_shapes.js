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

// Descriptions of the shapes. `corner` is the corner of the mouth; `dip` and `peak` are the edge of
// the upper lip, in the middle and at the bow beside it; `gap` is the opening in the middle, from
// upper to lower lip; `chin` is the edge of the lower lip; `jaw` is how far it has dropped; `round`
// leads from an almond (0) to an ellipse (1). The tongue has its height (`tongue`), the width of its
// back, and the height of a tip that comes over the lower teeth.
const HIDDEN = 120;
const DESCRIPTIONS = {
    rest: { corner: [61, 3], dip: -15, peak: -19.5, gap: [1, 1.6], chin: 24, jaw: 0 },
    closed: { corner: [60, 2], dip: -10.5, peak: -14, gap: [1.5, 1.9], chin: 18, jaw: -2 },
    teethOnLip: {
        corner: [60, 2], dip: -20, peak: -24, gap: [-7.5, 7.5], chin: 22, jaw: 5, tongue: 30,
    },
    tongueBetween: {
        corner: [60, 3], dip: -18, peak: -22, gap: [-5, 22], chin: 45, jaw: 13, tongue: 16,
        tip: 7,
    },
    tongueBehind: {
        corner: [61, 3], dip: -18, peak: -22, gap: [-5, 19], chin: 42, jaw: 12, tongue: 6, back: 30,
    },
    tongueRaised: {
        corner: [60, 3], dip: -18, peak: -22, gap: [-5.5, 31], chin: 54, jaw: 25, tongue: 4,
        back: 26,
    },
    tongueBack: {
        corner: [60, 3], dip: -18, peak: -22, gap: [-5, 26], chin: 49, jaw: 19, tongue: 15,
        back: 44,
    },
    hiss: { corner: [67, 0], dip: -18, peak: -21.5, gap: [-7, 16], chin: 38, jaw: -1, tongue: 24 },
    hush: {
        corner: [46, 2], dip: -25, peak: -29, gap: [-10, 18], chin: 45, jaw: 1, round: 0.75,
        tongue: 26,
    },
    curled: {
        corner: [45, 3], dip: -20, peak: -24, gap: [-5, 18], chin: 45, jaw: 13, round: 0.6,
        tongue: 20, back: 30,
    },
    open: {
        corner: [57, 8], dip: -21, peak: -25, gap: [-9, 64], chin: 89, jaw: 49, round: 0.55,
        tongue: 43, back: 42,
    },
    wide: {
        corner: [66, 3], dip: -21, peak: -24.5, gap: [-10, 50], chin: 73, jaw: 36, round: 0.3,
        tongue: 33, back: 46,
    },
    half: {
        corner: [63, 4], dip: -19, peak: -23, gap: [-8, 40], chin: 64, jaw: 27, round: 0.35,
        tongue: 27, back: 44,
    },
    slight: {
        corner: [63, 3], dip: -18, peak: -22, gap: [-6.5, 26], chin: 49, jaw: 14, round: 0.15,
        tongue: 19, back: 44,
    },
    spread: {
        corner: [73, -4], dip: -16.5, peak: -20, gap: [-8, 18], chin: 39, jaw: 11, round: 0.1,
        tongue: 18,
    },
    roundOpen: {
        corner: [45, 6], dip: -24, peak: -28, gap: [-11, 53], chin: 82, jaw: 40, round: 0.95,
        tongue: 38,
    },
    roundHalf: {
        corner: [36, 5], dip: -24, peak: -27.5, gap: [-8, 34], chin: 63, jaw: 29, round: 1,
        tongue: 36,
    },
    pucker: {
        corner: [28, 6], dip: -21, peak: -24, gap: [0, 17], chin: 44, jaw: 14, round: 1,
        tongue: 26,
    },
};

// Which shapes a phoneme shows.
const PHONEME_SHAPES = {
    x: { rest: 1 },
    p: { closed: 1 }, b: { closed: 1 }, m: { closed: 1 },
    f: { teethOnLip: 1 }, v: { teethOnLip: 1 },
    TH: { tongueBetween: 1 }, DH: { tongueBetween: 1 },
    t: { tongueBehind: 1 }, d: { tongueBehind: 1 }, n: { tongueBehind: 1 },
    l: { tongueRaised: 1 },
    k: { tongueBack: 1 }, g: { tongueBack: 1 }, NG: { tongueBack: 1 },
    s: { hiss: 1 }, z: { hiss: 1 },
    CH: { hush: 1 }, j: { hush: 1 }, SH: { hush: 1 }, ZH: { hush: 1 },
    r: { curled: 1 }, ER: { curled: 0.7, half: 0.3 },
    h: { slight: 0.6, half: 0.4 },
    y: { spread: 0.7, slight: 0.3 }, w: { pucker: 1 },
    AA: { open: 1 }, AH: { half: 0.7, open: 0.3 }, AE: { wide: 1 }, AO: { roundOpen: 1 },
    AW: { open: 0.6, roundHalf: 0.4 }, AY: { open: 0.65, spread: 0.35 },
    EH: { half: 1 }, EY: { half: 0.5, spread: 0.5 }, IH: { slight: 1 }, IY: { spread: 1 },
    OW: { roundHalf: 0.8, pucker: 0.2 }, OY: { roundOpen: 0.6, spread: 0.4 },
    UH: { roundHalf: 0.6, slight: 0.4 }, UW: { pucker: 1 },
};

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
    Object.entries(DESCRIPTIONS).map(([name, description]) => [name, shapeOf(description)]),
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
    Object.entries(PHONEME_SHAPES).map(([label, parts]) => [
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
