#include "apps/tessarin/pictures/mouth_sheet.h"

#include <algorithm>
#include <cstdio>
#include <string>

#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/pictures/mouth_picture.h"

namespace {

constexpr size_t kFramesApart = 3;
/// About four minutes at 30 frames a second, and a picture of 100 megabytes in memory.
constexpr size_t kMostMouths = 2400;
constexpr int kMouthsInRow = 12;
constexpr int kGap = 4;
constexpr int kMargin = 10;
constexpr int kLineHeight = 20;
constexpr int kCellWidth = kMouthWidth + kGap;
constexpr int kCellHeight = kMouthHeight + 2 * kLineHeight + 12;

constexpr color kPaper = {250, 250, 248};
constexpr color kInk = {30, 30, 36};
constexpr color kFaint = {120, 120, 128};
constexpr color kWordBoxes[] = {{214, 226, 243}, {243, 229, 208}};
constexpr color kPauseBox = {236, 236, 234};

/// The span that holds the middle of a frame, if any.
template <typename Span>
const Span* SpanAt(const std::vector<Span>& spans, const mouth_frame& frame) {
    const int64_t twice = int64_t{frame.startMs} + frame.endMs;
    const auto found = std::ranges::find_if(spans, [twice](const Span& span) {
        return int64_t{span.startMs} * 2 <= twice && twice < int64_t{span.endMs} * 2;
    });
    return found == spans.end() ? nullptr : &*found;
}

std::string Seconds(int32_t ms) {
    char text[32];
    std::snprintf(text, sizeof(text), "%.2f", ms / 1000.0);
    return text;
}

/// The text as far as there is room, in large letters if they fit.
void DrawFitting(Canvas& canvas, int left, int room, int top, std::string text, color paint) {
    const int scale = Canvas::TextWidth(text, 2) <= room ? 2 : 1;
    while (!text.empty() && Canvas::TextWidth(text, scale) > room) {
        do { // a character of UTF-8
            text.pop_back();
        } while (!text.empty() && (static_cast<unsigned char>(text.back()) & 0xC0) == 0x80);
    }
    const int x = left + (room - Canvas::TextWidth(text, scale)) / 2;
    canvas.DrawText(x, top + (kLineHeight - Canvas::TextHeight(scale)) / 2, text, paint, scale);
}

class Sheet {
public:
    explicit Sheet(const timed_result& found)
        : result(found), count((found.frames.size() + kFramesApart - 1) / kFramesApart),
          canvas(2 * kMargin + Columns() * kCellWidth - kGap,
                 2 * kMargin + Rows() * kCellHeight - kGap, kPaper) {}

    Canvas Draw() {
        for (size_t i = 0; i < count; ++i) {
            const mouth_frame& frame = result.frames[i * kFramesApart];
            const int place = static_cast<int>(i);
            const int left = kMargin + place % kMouthsInRow * kCellWidth;
            const int top = kMargin + place / kMouthsInRow * kCellHeight;
            DrawMouth(mouths, mouths.Mix(frame.weights), left, top, canvas);
            DrawCaption(frame, left, top + kMouthHeight);
        }
        return std::move(canvas);
    }

private:
    int Columns() const { return std::min(static_cast<int>(count), kMouthsInRow); }
    int Rows() const { return (static_cast<int>(count) + kMouthsInRow - 1) / kMouthsInRow; }

    void DrawCaption(const mouth_frame& frame, int left, int top) {
        const timed_phoneme* const phoneme = SpanAt(result.phonemes, frame);
        const timed_span* const word = SpanAt(result.words, frame);
        canvas.DrawText(left + 2, top + 6, Seconds(frame.startMs), kFaint, 1);
        if (phoneme != nullptr && phoneme->label != "x") {
            DrawFitting(canvas, left, kMouthWidth, top + 2, phoneme->label, kInk);
        }
        // A word's cells have one colour, so that one sees how far it reaches.
        const color box =
            word == nullptr ? kPauseBox : kWordBoxes[(word - result.words.data()) % 2];
        canvas.FillRect(left, top + kLineHeight + 2, kMouthWidth, kLineHeight, box);
        if (word != nullptr) {
            DrawFitting(canvas, left + 2, kMouthWidth - 4, top + kLineHeight + 2, word->text, kInk);
        }
    }

    const timed_result& result;
    size_t count;
    DrawnMouths mouths;
    Canvas canvas;
};

} // namespace

Canvas DrawMouthSheet(const timed_result& result) {
    if (result.frames.empty()) {
        throw Failure(kExitFailed, "no frames to draw a sheet of");
    }
    if (result.frames.size() > kMostMouths * kFramesApart) {
        throw Failure(kExitFailed, std::to_string(result.frames.size()) +
                                       " frames are too many for a sheet, " +
                                       std::to_string(kMostMouths * kFramesApart) +
                                       " are the most; choose a stretch with --from and --to");
    }
    return Sheet(result).Draw();
}
