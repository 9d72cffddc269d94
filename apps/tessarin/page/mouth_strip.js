// A row of small mouths, each below its time. They stand at fixed frames, so that they move with the
// picture and do not change while it moves.

// The part of the drawing that a small mouth shows, in its units.
const STRIP_LEFT = -80;
const STRIP_TOP = -42;
const STRIP_WIDTH = 160;
const STRIP_HEIGHT = 140;

function teethPath({ sides, edges, root }) {
    const path = new Path2D();
    edges.forEach((edge, i) => {
        path.addPath(new Path2D(tooth(sides[i], sides[i + 1], root, edge)));
        path.addPath(new Path2D(tooth(-sides[i + 1], -sides[i], root, edge)));
    });
    return path;
}

class MouthStrip {
    constructor(shown) {
        this.shown = shown;
        this.upperTeeth = teethPath(MOUTH.teeth.upper);
        this.lowerTeeth = teethPath(MOUTH.teeth.lower);
    }

    // How many frames share a mouth where a mouth is `width` pixels wide: 1, 2, 3, 4, 6, 8, 12, ...,
    // so that few mouths change while the picture is zoomed.
    framesAMouth(pxPerMs, width) {
        const frames = this.shown.mouthFrames;
        const frameMs = (frames.at(-1).end_ms - frames[0].start_ms) / frames.length;
        const isWide = (count) => count >= frames.length || count * frameMs * pxPerMs >= width;
        let power = 1;
        while (!isWide(power)) {
            power *= 2;
        }
        return power >= 4 && isWide(power * 0.75) ? power * 0.75 : power;
    }

    // The mouth at a time: its frame, and from when to when it stands.
    cellAt(ms, timeline, lane) {
        const frames = this.shown.mouthFrames;
        const count = this.framesAMouth(timeline.pxPerMs, lane.height * (STRIP_WIDTH / STRIP_HEIGHT));
        const index = Math.max(0, lastBefore(frames, ms));
        const first = index - (index % count);
        const last = Math.min(first + count, frames.length) - 1;
        return {
            frame: frames[Math.min(first + (count >> 1), last)],
            start_ms: frames[first].start_ms, end_ms: frames[last].end_ms, next: frames[last + 1],
        };
    }

    draw(context, timeline, lane) {
        if (this.shown.mouthFrames.length === 0) {
            return;
        }
        const toMs = timeline.fromMs + timeline.visibleMs;
        let ms = timeline.fromMs;
        while (ms <= toMs) {
            const cell = this.cellAt(ms, timeline, lane);
            const width = (cell.end_ms - cell.start_ms) * timeline.pxPerMs;
            this.drawMouth(context, cell.frame.weights, timeline.xOf(cell.start_ms), width, lane);
            ms = cell.next?.start_ms ?? Infinity;
        }
    }

    drawMouth(context, weights, left, width, lane) {
        const paths = pathsOfShape(mixShapes(weights));
        const path = (name) => new Path2D(paths[name]);
        const scale = lane.height / STRIP_HEIGHT;
        context.save();
        context.beginPath();
        context.roundRect(left + 0.75, lane.y, Math.max(0.5, width - 1.5), lane.height, 5);
        context.clip();
        context.fillStyle = "#e8b393";
        context.fillRect(left, lane.y, width, lane.height);
        context.translate(left + width / 2 - (STRIP_LEFT + STRIP_WIDTH / 2) * scale,
            lane.y - STRIP_TOP * scale);
        context.scale(scale, scale);
        this.drawInside(context, path, paths.jaw);
        for (const [name, colour] of [["lowerLip", "#c4756f"], ["upperLip", "#b05a5a"]]) {
            context.fillStyle = colour;
            context.fill(path(name));
        }
        context.strokeStyle = "#58191f";
        context.lineWidth = 2.6;
        context.stroke(path("seam"));
        context.restore();
    }

    drawInside(context, path, jaw) {
        context.save();
        context.clip(path("gap"));
        context.fillStyle = "#431519";
        context.fillRect(STRIP_LEFT, STRIP_TOP, STRIP_WIDTH, 2 * STRIP_HEIGHT);
        context.fillStyle = "#b9595f";
        context.fill(path("tongue"));
        context.fillStyle = "#f7f0e4";
        context.translate(0, jaw);
        context.fill(this.lowerTeeth);
        context.translate(0, -jaw);
        context.fillStyle = "#d27d80";
        context.fill(path("tongueTip"));
        context.fillStyle = "#f7f0e4";
        context.fill(this.upperTeeth);
        context.restore();
    }
}
