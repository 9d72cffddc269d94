// Plays the recording: speed with the pitch kept, and the loop of a selection.

class Player {
    constructor(audio, recording) {
        this.audio = audio;
        this.durationMs = recording.durationMs;
        this.restingMs = 0; // where the cursor was last, and stands while nothing plays
        this.loop = null;
        this.onChange = () => {};
        audio.src = URL.createObjectURL(recording.blob);
        audio.preservesPitch = true;
        for (const event of ["play", "pause", "ended"]) {
            audio.addEventListener(event, () => {
                this.notePosition();
                if (event === "ended" && this.loop) {
                    this.seek(this.loop.fromMs);
                    audio.play();
                }
                this.onChange();
            });
        }
        // The screen's clock stops in a hidden tab; this one goes on.
        audio.addEventListener("timeupdate", () => this.keepInLoop());
    }

    get isPlaying() {
        return !this.audio.paused && !this.audio.ended;
    }

    notePosition() {
        this.restingMs = Math.min(this.audio.currentTime * 1000, this.durationMs);
    }

    get positionMs() {
        if (this.isPlaying) {
            this.notePosition();
        }
        return this.restingMs;
    }

    seek(ms) {
        this.restingMs = clamp(ms, 0, this.durationMs);
        this.audio.currentTime = this.restingMs / 1000;
        this.onChange();
    }

    toggle() {
        if (this.isPlaying) {
            this.notePosition(); // the event comes later than the next picture
            this.audio.pause();
            return;
        }
        if (this.restingMs >= this.durationMs - 20) {
            this.seek(0);
        }
        this.keepInLoop(true);
        this.audio.play().catch(() => this.onChange());
    }

    setSpeed(speed) {
        this.audio.defaultPlaybackRate = speed;
        this.audio.playbackRate = speed;
        this.onChange();
    }

    // `range` with `fromMs` and `toMs`, or null.
    setLoop(range) {
        this.loop = range;
        this.onChange();
    }

    // Going back from the end of a loop to its beginning. A little earlier than a loop is not
    // a mistake: a seek lands on whole samples.
    keepInLoop(isStart = false) {
        if (!this.loop || !(this.isPlaying || isStart)) {
            return;
        }
        const { fromMs, toMs } = this.loop;
        const ms = this.positionMs;
        if (ms >= toMs || ms < fromMs - 5) {
            this.restingMs = fromMs;
            this.audio.currentTime = fromMs / 1000;
        }
    }
}
