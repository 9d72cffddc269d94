#include "mouth/switch_path.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace tessarin {

namespace {

constexpr double kNever = std::numeric_limits<double>::infinity();

/// The least of some costs, and the least of those of other shapes.
struct two_least {
    uint32_t shape = 0;
    double cost = kNever;
    uint32_t otherShape = 0;
    double otherCost = kNever;

    explicit two_least(const std::vector<double>& costs) {
        for (uint32_t i = 0; i < costs.size(); ++i) {
            if (costs[i] < cost) {
                otherShape = std::exchange(shape, i);
                otherCost = std::exchange(cost, costs[i]);
            } else if (costs[i] < otherCost) {
                otherShape = i;
                otherCost = costs[i];
            }
        }
    }

    double CostWithout(size_t excluded) const { return excluded == shape ? otherCost : cost; }
    uint32_t ShapeWithout(size_t excluded) const { return excluded == shape ? otherShape : shape; }
};

/// A search with a least duration: paths that have stayed in a shape for `least` frames, and those
/// that come to have. What a path began to cost before is kept less the cost of its shape so far.
class LastingPaths {
public:
    LastingPaths(size_t numShapes, size_t leastFrames)
        : least(leastFrames), begun(leastFrames * numShapes, kNever), costs(numShapes, kNever) {}

    const std::vector<double>& GetCosts() const { return costs; }

    /// A path begins to stay in `shape` with the next frame.
    void Begin(size_t frame, size_t shape, double cost, double sumBefore) {
        begun[frame % least * costs.size() + shape] = cost - sumBefore;
    }

    /// After frame number `frame`, whose cost is in `cost` and in `sum`. Returns whether the path
    /// that is now best has only just stayed long enough.
    bool Stay(size_t frame, size_t shape, double cost, double sum) {
        const double gone = costs[shape] + cost;
        // That which began least - 1 frames before this one.
        const double come = frame + 1 >= least
                                ? begun[(frame + 1 - least) % least * costs.size() + shape] + sum
                                : kNever;
        costs[shape] = std::min(gone, come);
        return come < gone;
    }

private:
    size_t least;
    std::vector<double> begun; ///< by the frame in which they began, modulo `least`, and shape
    std::vector<double> costs; ///< by shape
};

/// How the best path came to be in a shape at a frame.
struct step {
    uint32_t before = 0;      ///< the shape that was left, for a path that begins here
    bool leftEarly = false;   ///< before it had been held
    bool hasJustSeen = false; ///< the path that was seen long enough began `seen` frames ago
    bool hasJustHeld = false; ///< that which was held began `held` frames ago
};

class PathSearch {
public:
    PathSearch(const ShapeCosts& shapeCosts, size_t seenFrames, size_t heldFrames)
        : costs(shapeCosts), numShapes(costs.GetNumShapes()),
          seen(std::min(seenFrames, costs.GetNumFrames())),
          held(std::min(heldFrames, costs.GetNumFrames())), seenPaths(numShapes, seen),
          heldPaths(numShapes, held), steps(numShapes * costs.GetNumFrames()) {}

    void Run();
    std::vector<uint32_t> Trace() const;

private:
    void BeginAll(size_t frame);
    const step& At(size_t frame, size_t shape) const { return steps[frame * numShapes + shape]; }

    const ShapeCosts& costs;
    size_t numShapes;
    size_t seen;
    size_t held;
    LastingPaths seenPaths;
    LastingPaths heldPaths;
    std::vector<step> steps;
    std::vector<double> sums;
};

/// Paths that may leave their shape begin to stay in another one.
void PathSearch::BeginAll(size_t frame) {
    const two_least anyShape(heldPaths.GetCosts());
    const two_least closedOnly(seenPaths.GetCosts());
    for (size_t shape = 0; shape < numShapes; ++shape) {
        step& here = steps[frame * numShapes + shape];
        double cost = anyShape.CostWithout(shape) + kChangeCost;
        here.before = anyShape.ShapeWithout(shape);
        if (frame == 0) {
            cost = 0.0;
        } else if (costs.IsClosed(shape) && closedOnly.CostWithout(shape) + kChangeCost < cost) {
            cost = closedOnly.CostWithout(shape) + kChangeCost;
            here.before = closedOnly.ShapeWithout(shape);
            here.leftEarly = true;
        }
        seenPaths.Begin(frame, shape, cost, sums[shape]);
        heldPaths.Begin(frame, shape, cost, sums[shape]);
    }
}

void PathSearch::Run() {
    sums.assign(numShapes, 0.0);
    std::vector<double> now;
    for (size_t frame = 0; frame < costs.GetNumFrames(); ++frame) {
        BeginAll(frame);
        costs.Find(frame, now);
        for (size_t shape = 0; shape < numShapes; ++shape) {
            sums[shape] += now[shape];
            step& here = steps[frame * numShapes + shape];
            here.hasJustSeen = seenPaths.Stay(frame, shape, now[shape], sums[shape]);
            here.hasJustHeld = heldPaths.Stay(frame, shape, now[shape], sums[shape]);
        }
    }
}

std::vector<uint32_t> PathSearch::Trace() const {
    std::vector<uint32_t> path(costs.GetNumFrames());
    // The last shape need not be held: the track ends in it.
    uint32_t shape = two_least(seenPaths.GetCosts()).shape;
    bool isEarly = true;
    for (size_t end = path.size(); end > 0;) {
        size_t last = end - 1;
        while (!(isEarly ? At(last, shape).hasJustSeen : At(last, shape).hasJustHeld)) {
            --last;
        }
        const size_t begin = last + 1 - (isEarly ? seen : held);
        std::fill(path.begin() + static_cast<std::ptrdiff_t>(begin),
                  path.begin() + static_cast<std::ptrdiff_t>(end), shape);
        end = begin;
        isEarly = At(begin, shape).leftEarly;
        shape = At(begin, shape).before;
    }
    return path;
}

} // namespace

std::vector<uint32_t> FindShapePath(const ShapeCosts& costs, size_t seen, size_t held) {
    if (costs.GetNumFrames() == 0) {
        return {};
    }
    PathSearch search(costs, seen, held);
    search.Run();
    return search.Trace();
}

} // namespace tessarin
