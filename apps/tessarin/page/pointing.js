// Mouse, fingers and wheel on the timeline.

const CLICK_PX = 5;
const DOUBLE_TAP_MS = 350;
const LONG_PRESS_MS = 420;
const MOUSE_REACH_PX = 4;
const FINGER_REACH_PX = 12;

class Pointing {
    // `actions`: seek(ms), select(fromMs, toMs), selectAt(ms, y), edgeAt({ x, y }, reachPx), which
    // gives a boundary or -1, and beginEdge(edge), moveEdge(edge, ms), endEdge().
    constructor(element, timeline, actions) {
        this.element = element;
        this.timeline = timeline;
        this.actions = actions;
        this.pointers = new Map();
        this.lastTap = { time: -1e9, x: 0 };
        element.addEventListener("pointerdown", (event) => this.press(event));
        element.addEventListener("pointermove", (event) => this.move(event));
        element.addEventListener("pointerup", (event) => this.release(event));
        element.addEventListener("pointercancel", (event) => this.drop(event));
        element.addEventListener("wheel", (event) => this.wheel(event), { passive: false });
        element.addEventListener("contextmenu", (event) => {
            if (this.pointers.size > 0) {
                event.preventDefault();
            }
        });
    }

    place(event) {
        const box = this.element.getBoundingClientRect();
        return { x: event.clientX - box.left, y: event.clientY - box.top };
    }

    press(event) {
        if (event.button !== 0) {
            return;
        }
        this.element.setPointerCapture(event.pointerId);
        const place = this.place(event);
        this.pointers.set(event.pointerId, { ...place, startX: place.x, startY: place.y });
        this.view = { fromMs: this.timeline.fromMs, pxPerMs: this.timeline.pxPerMs };
        clearTimeout(this.longPress);
        if (this.gesture === "edge") {
            this.actions.endEdge(); // a second finger leaves the boundary where it is
        }
        const edge = this.edgeAt(event);
        if (this.pointers.size === 2) {
            this.gesture = "pinch";
            this.spread = this.distance();
            this.pinchMs = this.timeline.timeAt(this.middle());
        } else if (edge >= 0) {
            this.gesture = "edge";
            this.edge = edge;
            this.offset = this.timeline.xOf(this.actions.beginEdge(edge)) - place.x;
        } else {
            this.gesture = "press";
            // A finger moves the picture, and marks a stretch once it has rested.
            this.marks = event.pointerType === "mouse" && !event.shiftKey;
            if (event.pointerType !== "mouse") {
                this.longPress = setTimeout(() => this.beginMark(), LONG_PRESS_MS);
            }
        }
    }

    beginMark() {
        if (this.gesture === "press") {
            this.marks = true;
            const ms = this.timeline.timeAt(this.first().startX);
            this.actions.select(ms, ms);
            this.gesture = "mark";
        }
    }

    first() {
        return this.pointers.values().next().value;
    }

    distance() {
        const [a, b] = [...this.pointers.values()];
        return Math.max(20, Math.abs(a.x - b.x));
    }

    middle() {
        const [a, b] = [...this.pointers.values()];
        return (a.x + b.x) / 2;
    }

    move(event) {
        const pointer = this.pointers.get(event.pointerId);
        if (!pointer) {
            this.element.style.cursor = this.edgeAt(event) >= 0 ? "ew-resize" : "";
            return;
        }
        Object.assign(pointer, this.place(event));
        if (this.gesture === "pinch") {
            if (this.pointers.size === 2) {
                const pxPerMs = (this.view.pxPerMs * this.distance()) / this.spread;
                this.timeline.setView(this.pinchMs - this.middle() / pxPerMs, pxPerMs);
            }
            return;
        }
        if (this.gesture === "edge") {
            this.actions.moveEdge(this.edge, this.timeline.timeAt(pointer.x + this.offset));
            return;
        }
        const dx = pointer.x - pointer.startX;
        if (this.gesture === "press" && Math.hypot(dx, pointer.y - pointer.startY) > CLICK_PX) {
            clearTimeout(this.longPress);
            this.gesture = this.marks ? "mark" : "pan";
        }
        if (this.gesture === "mark") {
            this.actions.select(this.timeline.timeAt(pointer.startX),
                this.timeline.timeAt(pointer.x));
        } else if (this.gesture === "pan") {
            this.timeline.setView(this.view.fromMs - dx / this.view.pxPerMs, this.view.pxPerMs);
        }
    }

    release(event) {
        const pointer = this.pointers.get(event.pointerId);
        this.drop(event);
        if (!pointer || this.gesture !== "press") {
            return;
        }
        const ms = this.timeline.timeAt(pointer.x);
        const isDouble = event.timeStamp - this.lastTap.time < DOUBLE_TAP_MS &&
            Math.abs(pointer.x - this.lastTap.x) < 20;
        this.lastTap = { time: event.timeStamp, x: pointer.x };
        if (isDouble) {
            this.actions.selectAt(ms, pointer.y);
        } else {
            this.actions.seek(ms);
        }
    }

    drop(event) {
        clearTimeout(this.longPress);
        this.pointers.delete(event.pointerId);
        if (this.gesture === "edge") {
            this.gesture = "";
            this.actions.endEdge();
        }
    }

    edgeAt(event) {
        return this.actions.edgeAt(this.place(event),
            event.pointerType === "mouse" ? MOUSE_REACH_PX : FINGER_REACH_PX);
    }

    wheel(event) {
        event.preventDefault();
        const { timeline } = this;
        const lines = event.deltaMode === 1 ? 16 : 1;
        const isPan = event.shiftKey || Math.abs(event.deltaX) > Math.abs(event.deltaY);
        if (isPan) {
            const px = (event.deltaX || event.deltaY) * lines;
            timeline.setView(timeline.fromMs + px / timeline.pxPerMs, timeline.pxPerMs);
        } else {
            timeline.zoom(Math.exp(-event.deltaY * lines * 0.0025), this.place(event).x);
        }
    }
}
