#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>

#include "text/script/script_layout.h"
#include "text/script/script_table.h"

namespace tessarin {

namespace {

/// A text or a number of a TextGrid; all else in such a file is for people.
struct grid_value {
    bool isText;
    size_t start; ///< of a text, without its quotes
    size_t end;
    double number;
};

class GridScanner {
public:
    explicit GridScanner(std::string_view grid) : text(grid) {}

    std::optional<grid_value> Next() {
        while (at < text.size()) {
            if (text[at] == '"') {
                return ReadText();
            }
            const size_t end = std::min(text.find_first_of(" \t\r\n\"", at), text.size());
            grid_value value{false, at, end, 0.0};
            const char* const last = text.data() + end;
            const auto [stop, error] = std::from_chars(text.data() + at, last, value.number);
            at = std::max(end, at + 1);
            if (error == std::errc() && stop == last && std::isfinite(value.number)) {
                return value;
            }
        }
        return std::nullopt;
    }

    std::optional<grid_value> NextOf(bool isText) {
        const std::optional<grid_value> value = Next();
        return value && value->isText == isText ? value : std::nullopt;
    }

private:
    std::optional<grid_value> ReadText() {
        const size_t start = ++at;
        while (at < text.size()) {
            if (text[at++] != '"') {
                continue;
            }
            if (at >= text.size() || text[at] != '"') {
                return grid_value{true, start, at - 1, 0.0};
            }
            ++at; // a quote within the text
        }
        return std::nullopt;
    }

    std::string_view text;
    size_t at = 0;
};

struct grid_tier {
    std::string name;
    std::vector<script_region> regions;
};

int32_t MsOf(double seconds) {
    return static_cast<int32_t>(std::lround(std::clamp(seconds, 0.0, 2147483.0) * 1000.0));
}

/// Reads a tier of intervals, or skips one of points; false at the end of what can be read.
bool ReadTier(GridScanner& scanner, std::string_view text, grid_tier& tier) {
    const auto kind = scanner.NextOf(true);
    const auto name = scanner.NextOf(true);
    const auto from = scanner.NextOf(false);
    const auto to = scanner.NextOf(false);
    const auto count = scanner.NextOf(false);
    if (!kind || !name || !from || !to || !count) {
        return false;
    }
    const bool hasIntervals = text.substr(kind->start, kind->end - kind->start) == "IntervalTier";
    tier.name = InLowerCase(text.substr(name->start, name->end - name->start));
    for (double i = 0; i < count->number; ++i) {
        const auto start = scanner.NextOf(false);
        const auto end = hasIntervals ? scanner.NextOf(false) : start;
        const auto label = scanner.NextOf(true);
        if (!start || !end || !label) {
            return false;
        }
        if (hasIntervals && label->end > label->start) {
            tier.regions.push_back({static_cast<uint32_t>(label->start),
                                    static_cast<uint32_t>(label->end),
                                    true,
                                    {},
                                    0,
                                    MsOf(start->number),
                                    MsOf(end->number)});
        }
    }
    return true;
}

} // namespace

void LayOutTextGrid(std::string_view text, const ScriptTable& table, script_layout& out) {
    GridScanner scanner(text);
    scanner.NextOf(true); // ooTextFile
    scanner.NextOf(true); // TextGrid
    for (int i = 0; i < 3; ++i) {
        scanner.NextOf(false); // its times, and how many tiers
    }
    std::vector<grid_tier> tiers;
    for (bool hasMore = true; hasMore;) {
        hasMore = ReadTier(scanner, text, tiers.emplace_back());
    }
    const auto holds = [&](const grid_tier& tier, script_section section) {
        return !tier.regions.empty() &&
               std::ranges::any_of(table.Entries(section), [&](const auto& part) {
                   return tier.name.find(part.first) != std::string::npos;
               });
    };
    auto best = std::ranges::find_if(
        tiers, [&](const grid_tier& t) { return holds(t, script_section::kTiers); });
    if (best == tiers.end()) {
        best = std::ranges::find_if(tiers, [&](const grid_tier& tier) {
            return !tier.regions.empty() && !holds(tier, script_section::kSoundTiers);
        });
    }
    if (best != tiers.end()) {
        out.regions = std::move(best->regions);
    }
}

} // namespace tessarin
