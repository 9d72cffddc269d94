// Draws the mouth: fills the paths of the drawing in the page from one list of numbers.

function curvesOfShape(shape) {
    const curves = {};
    let next = 0;
    for (const [name, count] of CURVES) {
        curves[name] = Array.from({ length: count }, (_, i) => [
            shape[next + 2 * i], shape[next + 2 * i + 1],
        ]);
        next += 2 * count;
    }
    return { ...curves, jaw: shape[next] };
}

// From the left side through the middle to the right one.
function wholeCurve(half) {
    const left = half.slice(1).reverse().map(([x, y]) => [-x, y]);
    return [...left, ...half];
}

function point([x, y]) {
    return `${x.toFixed(2)} ${y.toFixed(2)}`;
}

function cubics(points) {
    let path = "";
    for (let i = 1; i + 2 < points.length; i += 3) {
        path += ` C ${point(points[i])}, ${point(points[i + 1])}, ${point(points[i + 2])}`;
    }
    return path;
}

// The area between two curves.
function areaBetween(upper, lower) {
    const forth = wholeCurve(upper);
    const back = wholeCurve(lower).reverse();
    return `M ${point(forth[0])}${cubics(forth)} L ${point(back[0])}${cubics(back)} Z`;
}

function line(half) {
    const whole = wholeCurve(half);
    return `M ${point(whole[0])}${cubics(whole)}`;
}

// The edge of cheek and chin. The jaw turns about its joint, so that the chin sinks most.
function faceEdge(jaw) {
    return [
        [0, 124 + jaw * 0.8], [26, 124 + jaw * 0.8], [46, 118 + jaw * 0.76], [66, 100 + jaw * 0.66],
        [96, 74 + jaw * 0.45], [118, 44 + jaw * 0.15], [126, -6], [131, -40], [134, -80],
        [135, -130],
    ];
}

// The fold from the wing of the nose past the corner of the mouth, which it gives way to.
function fold([x, y]) {
    const out = 0.55 * (x - 61);
    return `M 32 -60 C 46 -52, ${point([70 + out, -34 + y * 0.4])}, ${point([76 + out, -4 + y])}`;
}

function pathsOfShape(shape) {
    const curves = curvesOfShape(shape);
    const { outerUpper, innerUpper, innerLower, outerLower, tongue, tongueTip, jaw } = curves;
    const corner = outerUpper[6];
    const [, chin] = outerLower[0];
    const shine = innerLower[0][1] + 0.34 * (chin - innerLower[0][1]);
    const shineWidth = corner[0] * 0.3;
    const face = wholeCurve(faceEdge(jaw));
    const groove = tongue[0][1];
    return {
        face: `M ${point(face[0])}${cubics(face)} Z`,
        upperLip: areaBetween(outerUpper, innerUpper),
        lowerLip: areaBetween(innerLower, outerLower),
        gap: areaBetween(innerUpper, innerLower),
        seam: line(innerUpper),
        upperEdge: line(outerUpper),
        lowerEdge: line(outerLower),
        tongue: `${line(tongue)} Z`,
        tongueGroove: `M 0 ${(groove + 7).toFixed(2)} L 0 ${(groove + 60).toFixed(2)}`,
        tongueTip: `${line(tongueTip)} Z`,
        shine: `M ${point([-shineWidth, shine - 1])} Q ${point([0, shine + 2])}, ` +
            point([shineWidth, shine - 1]),
        underLip: `M ${point([-34, chin + 13])} C ${point([-16, chin + 21])}, ` +
            `${point([16, chin + 21])}, ${point([34, chin + 13])}`,
        fold: fold(corner),
        corner: `M ${point([corner[0] - 2, corner[1] - 1])} q 4 1, 4 5`,
        jaw,
    };
}

// A tooth from its root to its edge, whose corners are round.
function tooth(left, right, root, edge) {
    const round = 3;
    const before = edge - Math.sign(edge - root) * round;
    return `M ${left} ${root} L ${left} ${before} Q ${left} ${edge} ${left + round} ${edge} ` +
        `L ${right - round} ${edge} Q ${right} ${edge} ${right} ${before} L ${right} ${root} Z`;
}

// Teeth of the right half from the middle on: where each ends, and how high its edge is while the
// jaw is shut.
function growTeeth(group, { sides, edges, root }) {
    edges.forEach((edge, i) => {
        for (const [left, right] of [[sides[i], sides[i + 1]], [-sides[i + 1], -sides[i]]]) {
            const path = document.createElementNS(group.namespaceURI, "path");
            path.setAttribute("d", tooth(left, right, root, edge));
            group.append(path);
        }
    });
}

class Mouth {
    constructor(svg) {
        growTeeth(svg.querySelector("#upper-teeth"), MOUTH.teeth.upper);
        growTeeth(svg.querySelector("#lower-teeth"), MOUTH.teeth.lower);
        this.parts = [...svg.querySelectorAll("[data-path]")];
        this.jaws = [...svg.querySelectorAll("[data-jaw]")];
    }

    show(weights) {
        const paths = pathsOfShape(mixShapes(weights));
        for (const part of this.parts) {
            part.setAttribute("d", paths[part.dataset.path]);
        }
        for (const part of this.jaws) {
            const drop = paths.jaw * Number(part.dataset.jaw);
            part.setAttribute("transform", `translate(0 ${drop.toFixed(2)})`);
        }
    }
}
