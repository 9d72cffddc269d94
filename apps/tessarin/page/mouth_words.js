// A mouth in words, for those who read faster than they see.

// Less is a closure that is not complete, and not seen as one.
const LIPS_CLOSED = 0.8;
const TEETH_ON_LIP = 0.5;
const AT_REST = 0.9;
const TONGUE_SEEN = 0.5;
// Where the corner of the mouth is, against 61 at rest.
const ROUNDED_CORNER = 47;
const SPREAD_CORNER = 67;

function gapOf(shape) {
    const { innerUpper, innerLower } = curvesOfShape(shape);
    return innerLower[0][1] - innerUpper[0][1];
}

// How far the lips are apart: 0 at rest, 1 as in an open "ah".
function opennessOf(shape) {
    const rest = gapOf(KEY_SHAPES.rest);
    return clamp((gapOf(shape) - rest) / (gapOf(KEY_SHAPES.open) - rest), 0, 1);
}

function mouthInWords(weights) {
    const sumOf = (...labels) => labels.reduce((sum, label) => sum + (weights[label] ?? 0), 0);
    if (sumOf("p", "b", "m") >= LIPS_CLOSED) {
        return "lips closed";
    }
    if (sumOf("f", "v") >= TEETH_ON_LIP) {
        return "teeth on the lip";
    }
    if (sumOf("x") >= AT_REST) {
        return "at rest";
    }
    const shape = mixShapes(weights);
    const corner = curvesOfShape(shape).outerUpper[6][0];
    return [
        `${Math.round(100 * opennessOf(shape))} % open`,
        corner < ROUNDED_CORNER && "rounded", corner > SPREAD_CORNER && "spread",
        sumOf("TH", "DH") >= TONGUE_SEEN && "tongue between the teeth",
    ].filter(Boolean).join(", ");
}
