#include "apps/tessarin/pictures/spectrogram_picture.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

#include "apps/tessarin/pictures/spectrum_columns.h"

namespace {

constexpr int kLeft = 44; // of the frequencies
constexpr int kRight = 18;
constexpr int kTop = 8;
constexpr int kWaveHeight = 70;
constexpr int kGap = 6;
constexpr int kSpectrumHeight = 320;
constexpr int kAxisHeight = 22;
constexpr int kRowHeight = 24;
constexpr int kMostColumns = 30000;

constexpr color kPaper = {250, 250, 248};
constexpr color kInk = {30, 30, 36};
constexpr color kFaint = {150, 150, 158};
constexpr color kWave = {70, 100, 150};
constexpr color kWordLine = {255, 255, 255};
constexpr color kPhonemeLine = {170, 200, 255};
constexpr color kWordBoxes[] = {{223, 231, 243}, {238, 242, 248}};
constexpr color kSoundBoxes[] = {{240, 232, 218}, {247, 243, 235}};

/// From silence to loud, each step as much brighter as the one before.
constexpr color kHeat[] = {{0, 0, 6},      {28, 16, 68},    {79, 18, 123},
                           {129, 37, 129}, {181, 54, 122},  {229, 80, 100},
                           {251, 135, 97}, {254, 194, 135}, {252, 253, 191}};

color HeatOf(float level) {
    constexpr int kSteps = static_cast<int>(std::size(kHeat)) - 1;
    const float place = std::clamp(level, 0.0f, 1.0f) * kSteps;
    const int low = std::min(static_cast<int>(place), kSteps - 1);
    return Mixed(kHeat[low], kHeat[low + 1], place - static_cast<float>(low));
}

/// A name between two times, to be written into a row.
struct labelled_span {
    std::string name;
    int startMs;
    int endMs;
};

class Picture {
public:
    Picture(tessarin::IPCMDataSource& samples, sample_range stretch, const timed_result* result,
            const spectrogram_settings& wanted)
        : source(samples), range(stretch), timings(result), settings(wanted),
          startMs(samples.SamplesToMs(stretch.first)), endMs(samples.SamplesToMs(stretch.end)),
          columns(ColumnsFor(wanted, endMs - startMs)),
          canvas(kLeft + columns + kRight, HeightFor(result), kPaper) {}

    Canvas Draw(tessarin::ProgressSink& progress) {
        DrawWave();
        DrawSpectrum(progress);
        DrawFrequencies();
        DrawTimes();
        if (timings != nullptr) {
            DrawTimings();
        }
        return std::move(canvas);
    }

private:
    static int ColumnsFor(const spectrogram_settings& settings, double ms) {
        return static_cast<int>(
            std::clamp(ms / 1000 * settings.pixelsPerSecond, 1.0, double{kMostColumns}));
    }
    static int HeightFor(const timed_result* result) {
        const int rows = result == nullptr ? 0 : result->words.empty() ? 1 : 2;
        return kTop + kWaveHeight + kGap + kSpectrumHeight + rows * kRowHeight + kAxisHeight;
    }

    int ColumnOf(double ms) const {
        return static_cast<int>(std::lround((ms - startMs) / (endMs - startMs) * columns));
    }

    void DrawWave() {
        const int middle = kTop + kWaveHeight / 2;
        canvas.FillRect(kLeft, middle, columns, 1, Mixed(kPaper, kWave, 0.4f));
        std::vector<int16_t> samples;
        std::vector<std::pair<int, int>> reach(static_cast<size_t>(columns));
        int loudest = 1;
        for (int column = 0; column < columns; ++column) {
            const auto length = static_cast<int64_t>(range.end) - range.first;
            const auto first = static_cast<int32_t>(range.first + length * column / columns);
            const auto end = static_cast<int32_t>(range.first + length * (column + 1) / columns);
            auto count = static_cast<uint32_t>(std::max(end - first, 1));
            samples.resize(count);
            if (source.ReadSamplesInt16(samples.data(), first, &count, 1) != 0 || count == 0) {
                continue;
            }
            const auto [low, high] = std::minmax_element(samples.begin(), samples.begin() + count);
            reach[static_cast<size_t>(column)] = {*low, *high};
            loudest = std::max({loudest, std::abs(int{*low}), std::abs(int{*high})});
        }
        for (int column = 0; column < columns; ++column) {
            const auto [low, high] = reach[static_cast<size_t>(column)];
            const int top = middle - high * (kWaveHeight / 2) / loudest;
            const int bottom = middle - low * (kWaveHeight / 2) / loudest;
            canvas.FillRect(kLeft + column, top, 1, bottom - top + 1, kWave);
        }
    }

    double HighestHz() const {
        return std::min(settings.highestHz, source.GetSampleRate() / 65536.0 / 2);
    }

    /// The loudest level, but for a few clicks.
    static float LoudestOf(const spectrum_columns& spectrum) {
        std::vector<float> levels = spectrum.levels;
        const auto rank = levels.begin() +
                          static_cast<std::ptrdiff_t>(static_cast<double>(levels.size()) * 0.9995);
        std::ranges::nth_element(levels, std::min(rank, levels.end() - 1));
        return *std::min(rank, levels.end() - 1);
    }

    void DrawSpectrum(tessarin::ProgressSink& progress) {
        const spectrum_columns spectrum = MeasureSpectrum(
            source, {range, columns, kSpectrumHeight, HighestHz(), settings.windowMs}, progress);
        const float loudest = LoudestOf(spectrum);
        const auto decibels = static_cast<float>(settings.rangeDb);
        for (int column = 0; column < columns; ++column) {
            for (int row = 0; row < kSpectrumHeight; ++row) {
                const float level = 1 - (loudest - spectrum.At(column, row)) / decibels;
                canvas.SetPixel(kLeft + column, kSpectrumTop + kSpectrumHeight - 1 - row,
                                HeatOf(level));
            }
        }
    }

    void DrawFrequencies() {
        const double highest = HighestHz();
        for (int khz = 0; khz * 1000 <= highest; ++khz) {
            const int y = kSpectrumTop + kSpectrumHeight - 1 -
                          static_cast<int>(khz * 1000 / highest * (kSpectrumHeight - 1));
            canvas.FillRect(kLeft - 5, y, 5, 1, kInk);
            if (khz % 2 == 0) {
                const std::string name = khz == 0 ? "0 Hz" : std::to_string(khz) + "k";
                canvas.DrawText(kLeft - 9 - Canvas::TextWidth(name, 1),
                                std::min(y - 3, kSpectrumTop + kSpectrumHeight - 8), name, kInk, 1);
            }
        }
    }

    void DrawTimes() {
        const int y = canvas.GetHeight() - kAxisHeight;
        const double msPerPixel = (endMs - startMs) / columns;
        int step = 100;
        for (const int wider : {200, 500, 1000, 2000, 5000, 10000, 30000, 60000}) {
            step = step / msPerPixel < 40 ? wider : step;
        }
        const auto first = static_cast<int64_t>(std::ceil(startMs / step)) * step;
        for (int64_t ms = first; static_cast<double>(ms) <= endMs; ms += step) {
            const int x = kLeft + ColumnOf(static_cast<double>(ms));
            canvas.FillRect(x, y, 1, 5, kInk);
            std::string name = std::to_string(ms / 1000) + "." + std::to_string(ms % 1000 / 100);
            name += ms == first ? " s" : "";
            canvas.DrawText(x - Canvas::TextWidth(name, 1) / 2, y + 8, name, kInk, 1);
        }
    }

    void DrawTimings() {
        std::vector<labelled_span> sounds;
        for (const timed_phoneme& each : timings->phonemes) {
            sounds.push_back({each.label == "x" ? "" : each.label, each.startMs, each.endMs});
        }
        std::vector<labelled_span> words;
        for (const timed_span& each : timings->words) {
            words.push_back({each.text, each.startMs, each.endMs});
        }
        const int top = kSpectrumTop + kSpectrumHeight;
        DrawLines(sounds, kPhonemeLine, 0.7f, 3);
        DrawLines(words, kWordLine, 0.9f, 1);
        DrawRow(sounds, top, kSoundBoxes);
        if (!words.empty()) {
            DrawRow(words, top + kRowHeight, kWordBoxes);
        }
    }

    /// Boundaries through the pictures, one dot in `every`.
    void DrawLines(const std::vector<labelled_span>& spans, color paint, float share, int every) {
        for (const labelled_span& span : spans) {
            for (const int ms : {span.startMs, span.endMs}) {
                const int column = ColumnOf(ms);
                if (column <= 0 || column >= columns) {
                    continue;
                }
                for (int y = kSpectrumTop; y < kSpectrumTop + kSpectrumHeight; y += every) {
                    canvas.Tint(kLeft + column, y, paint, share);
                }
                for (int y = kTop; y < kTop + kWaveHeight; y += every) {
                    canvas.Tint(kLeft + column, y, kFaint, share);
                }
            }
        }
    }

    void DrawRow(const std::vector<labelled_span>& spans, int top, const color (&boxes)[2]) {
        const int scale = ScaleFor(spans);
        size_t number = 0;
        for (const labelled_span& span : spans) {
            const int first = std::clamp(ColumnOf(span.startMs), 0, columns);
            const int end = std::clamp(ColumnOf(span.endMs), 0, columns);
            if (span.name.empty() || end <= first) {
                continue;
            }
            canvas.FillRect(kLeft + first, top, end - first, kRowHeight - 1, boxes[number++ % 2]);
            canvas.FillRect(kLeft + first, top, 1, kRowHeight - 1, kFaint);
            canvas.FillRect(kLeft + end, top, 1, kRowHeight - 1, kFaint);
            DrawName(span.name, kLeft + first + 1, end - first - 1, top, scale);
        }
    }

    /// Large letters where most names of a row have room for them.
    int ScaleFor(const std::vector<labelled_span>& spans) const {
        constexpr double kMost = 0.8;
        const auto fitting = std::ranges::count_if(spans, [this](const labelled_span& span) {
            return Canvas::TextWidth(span.name, 2) < ColumnOf(span.endMs) - ColumnOf(span.startMs);
        });
        return static_cast<double>(fitting) >= kMost * static_cast<double>(spans.size()) ? 2 : 1;
    }

    /// A name without room is left out.
    void DrawName(const std::string& name, int left, int room, int top, int scale) {
        for (; scale > 0; --scale) {
            const int width = Canvas::TextWidth(name, scale);
            if (width <= room) {
                const int height = (kRowHeight - Canvas::TextHeight(scale)) / 2;
                canvas.DrawText(left + (room - width) / 2, top + height, name, kInk, scale);
                return;
            }
        }
    }

    static constexpr int kSpectrumTop = kTop + kWaveHeight + kGap;

    tessarin::IPCMDataSource& source;
    sample_range range;
    const timed_result* timings;
    const spectrogram_settings& settings;
    double startMs;
    double endMs;
    int columns;
    Canvas canvas;
};

} // namespace

Canvas DrawSpectrogram(tessarin::IPCMDataSource& source, sample_range range,
                       const timed_result* timings, const spectrogram_settings& settings,
                       tessarin::ProgressSink& progress) {
    return Picture(source, range, timings, settings).Draw(progress);
}
