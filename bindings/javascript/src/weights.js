/** The weights of a track at a time, straight between the middles of frames. `out`, which may be
    given to be used again, has a value for each shape. */
export function weightsAt(track, ms, out = new Float32Array(track.shapes.names.length)) {
    const { startMs, endMs, weights } = track;
    const width = track.shapes.names.length;
    const count = startMs.length;
    if (count === 0) {
        out.fill(0);
        out[track.shapes.rest] = 1;
        return out;
    }
    // The first frame whose middle is not before the time.
    let low = 0;
    let high = count - 1;
    while (low < high) {
        const half = (low + high) >> 1;
        if (startMs[half] + endMs[half] < 2 * ms) {
            low = half + 1;
        } else {
            high = half;
        }
    }
    const before = Math.max(low - 1, 0);
    const from = (startMs[before] + endMs[before]) / 2;
    const to = (startMs[low] + endMs[low]) / 2;
    const share = to > from ? Math.min(Math.max((ms - from) / (to - from), 0), 1) : 0;
    for (let i = 0; i < width; ++i) {
        const a = weights[before * width + i];
        out[i] = a + (weights[low * width + i] - a) * share;
    }
    return out;
}
