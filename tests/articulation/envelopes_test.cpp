#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <set>
#include <sstream>

#include "articulation/common_key_times.h"
#include "articulation/envelopes.h"
#include "sounds.h"

namespace tessarin::test {
namespace {

std::string Shown(const std::string& label, int32_t start, int32_t end,
                  std::span<const envelope_point> points) {
    std::ostringstream text;
    text << label << '[' << start << ',' << end << ']';
    for (const envelope_point& point : points) {
        text << ' ' << point.t0 << '-' << point.t1 << ':' << point.value;
    }
    return text.str();
}

std::vector<std::string> Shown(const std::vector<phn_env_marker>& envelopes) {
    std::vector<std::string> shown;
    for (const phn_env_marker& e : envelopes) {
        shown.push_back(Shown(e.label, e.start, e.end, e.points));
    }
    return shown;
}

articulation Frame(int32_t start, int32_t end, std::vector<articulation_entry> entries) {
    articulation frame = {static_cast<int32_t>(entries.size()), {}, start, end};
    std::copy(entries.begin(), entries.end(), frame.entries);
    return frame;
}

std::vector<std::string> Built(const std::vector<articulation>& frames, bool compress = false) {
    std::vector<phn_env_marker> envelopes;
    EXPECT_EQ(BuildPhonemeEnvelopes(frames, {30.0f, compress, false}, envelopes), kNoError);
    return Shown(envelopes);
}

TEST(BuildEnvelopes, OneCurveForEachStretchWithZerosAtItsEnds) {
    EXPECT_THAT(Built({Frame(100, 140, {{"x", 1.0f}}), Frame(140, 180, {{"x", 0.5f}, {"b", 0.5f}}),
                       Frame(180, 220, {{"x", 1.0f}}), Frame(220, 260, {{"b", 1.0f}})}),
                testing::ElementsAre("x[60,260] 60-100:0 100-140:1 140-180:0.5 180-220:1 220-260:0",
                                     "b[100,220] 100-140:0 140-180:0.5 180-220:0",
                                     "b[180,300] 180-220:0 220-260:1 260-300:0"));
}

TEST(BuildEnvelopes, LeadInsStopAtZeroUnlessTheCurveIsTheLast) {
    EXPECT_THAT(Built({Frame(0, 40, {{"b", 1.0f}}), Frame(40, 80, {{"x", 1.0f}})}),
                testing::ElementsAre("b[0,80] 0-40:1 40-80:0", "x[0,120] 0-40:0 40-80:1 80-120:0"));
    EXPECT_THAT(Built({Frame(0, 40, {{"b", 1.0f}})}),
                testing::ElementsAre("b[-40,80] -40-0:0 0-40:1 40-80:0"));
}

TEST(BuildEnvelopes, CompressionLeavesOutEqualNeighboursAndTheLastCurveHasItAlways) {
    std::vector<articulation> frames;
    for (int32_t i = 1; i <= 4; ++i) {
        frames.push_back(Frame(40 * i, 40 * i + 40, {{"b", 0.5f}, {"x", 0.5f}}));
    }
    frames.push_back(Frame(200, 240, {{"x", 1.0f}}));
    const std::string last = "x[0,280] 0-40:0 40-80:0.5 160-200:0.5 200-240:1 240-280:0";
    EXPECT_THAT(Built(frames),
                testing::ElementsAre("b[0,240] 0-40:0 40-80:0.5 80-120:0.5 120-160:0.5 "
                                     "160-200:0.5 200-240:0",
                                     last));
    EXPECT_THAT(Built(frames, true),
                testing::ElementsAre("b[0,240] 0-40:0 40-80:0.5 160-200:0.5 200-240:0", last));
}

TEST(BuildEnvelopes, AHostReadsRecordsWithPointsOfTheirOwn) {
    CPhonemeMixtureArticulator articulator;
    EXPECT_EQ(articulator.GenerateEnvelopes(), kNoError);
    EXPECT_EQ(articulator.GetEnvelopesBegin(), nullptr);
    articulator.AddArticulation(Frame(0, 40, {{"b", 1.0f}}), true);
    articulator.AddArticulation(Frame(40, 80, {{"x", 1.0f}}), false);
    articulator.GenerateEnvelopes();
    const articulation_envelope* e = articulator.GetEnvelopesBegin();
    ASSERT_EQ(articulator.GetEnvelopesEnd() - e, 2);
    EXPECT_EQ(Shown(e->label, e->start, e->end, {e->points, static_cast<size_t>(e->count)}),
              "b[0,80] 0-40:1 40-80:0");
    EXPECT_EQ(e[1].points[1].value, 1.0f);
}

TEST(LimitSlope, LowersToWhatPassesOverAllPairsComeTo) {
    std::mt19937 random(1);
    for (int run = 0; run < 300; ++run) {
        SCOPED_TRACE(run);
        const float slopes[] = {0.25f, 0.1f, 0.0f, 0.01f, 2.0f, -0.5f, std::nanf("")};
        const float slope = slopes[run % 7];
        std::vector<envelope_point> points(1 + random() % 40);
        for (envelope_point& point : points) {
            point = {0, 0, static_cast<float>(random() % 1000) / 1000.0f};
        }
        std::vector<envelope_point> plain = points;
        bool changed = true;
        for (size_t pass = 0; pass < 3 * plain.size() && changed; ++pass) {
            changed = false;
            for (size_t i = 1; i < plain.size(); ++i) {
                float &a = plain[i - 1].value, &b = plain[i].value;
                if (b > a + slope) {
                    b = a + slope;
                    changed = true;
                } else if (a > b + slope) {
                    a = b + slope;
                    changed = true;
                }
            }
        }
        LimitSlope(points, slope);
        for (size_t i = 0; i < points.size(); ++i) {
            ASSERT_EQ(points[i].value, plain[i].value);
        }
    }
}

TEST(LimitSlope, LeavesAnEmptyEnvelopeAlone) {
    for (const float slope : {0.25f, -0.5f, std::nanf("")}) {
        LimitSlope({}, slope);
    }
    std::vector<envelope_point> one = {{0, 40, 1.0f}};
    LimitSlope(one, -0.5f);
    EXPECT_EQ(one.front().value, 1.0f);
}

/// The same without shortcuts: for each label every key time walks all envelopes and points.
std::vector<phn_env_marker> PlainCommonKeys(envelopes_by_label lists, float rate) {
    const int32_t grid = static_cast<int32_t>(rate);
    const int32_t step = static_cast<int32_t>(1000.0f / rate);
    std::set<int32_t> times;
    for (const auto& [label, list] : lists) {
        for (const phn_env_marker& e : list) {
            times.insert(e.end / grid * grid);
            for (const envelope_point& p : e.points) {
                times.insert(p.t1 / grid * grid);
            }
        }
    }
    const auto takes = [&](phn_env_marker& e, int32_t t) {
        if (t >= e.start && t <= e.end) {
            const auto at = [&](const envelope_point& p) { return p.t1 == t; };
            if (t == e.start || std::any_of(e.points.begin(), e.points.end(), at)) {
                return true;
            }
            float value = 0.0f;
            int32_t time = e.start;
            for (auto p = e.points.begin(); p != e.points.end(); ++p) {
                if (p->t1 > t) {
                    const float share =
                        static_cast<float>(t - time) / static_cast<float>(p->t1 - time);
                    const envelope_point key = {time, t, value + (p->value - value) * share};
                    p->t0 = t;
                    e.points.insert(p, key);
                    return true;
                }
                value = p->value;
                time = p->t1;
            }
            return true;
        }
        if (t >= e.start - step - 2 && t <= e.start) {
            e.points.insert(e.points.begin(), {t, e.start, 0.0f});
            e.start = t;
            return true;
        }
        if (t >= e.end && t <= e.end + 2 + step) {
            e.points.push_back({e.end, t, 0.0f});
            e.end = t;
            return true;
        }
        return false;
    };
    std::vector<phn_env_marker> finished;
    for (auto& [label, list] : lists) {
        for (auto t = times.begin(); t != times.end(); ++t) {
            if (std::none_of(list.begin(), list.end(), [&](auto& e) { return takes(e, *t); })) {
                phn_env_marker e(*t, *t + step, label.Text());
                const auto next = std::next(t);
                const bool near = next != times.end() && std::abs(*next - e.end) <= 2;
                e.points.push_back({*t, near ? *next : e.end, 0.0f});
                list.push_back(e);
            }
        }
        finished.insert(finished.end(), list.begin(), list.end());
    }
    return finished;
}

TEST(CommonKeyTimes, AreThoseOfThePlainMethod) {
    std::mt19937 random(2);
    const auto below = [&](int32_t limit) { return static_cast<int32_t>(random() % limit); };
    for (int run = 0; run < 400; ++run) {
        SCOPED_TRACE(run);
        const float rate = run % 4 == 0 ? 24.7f : run % 4 == 1 ? 60.0f : 30.0f;
        const bool ordered = run % 3 != 0; // hosts may add frames in any order
        envelopes_by_label lists;
        for (int i = 0; i < 1 + below(8); ++i) {
            const phoneme_label label(i % 2 ? "b" : "AA");
            int32_t time = below(2000) - 200;
            phn_env_marker e(time, time, label.Text());
            for (int k = 0; k < 1 + below(12); ++k) {
                const int32_t next = ordered ? time + 1 + below(60) : time + below(120) - 50;
                e.points.push_back({time, next, static_cast<float>(below(100)) / 100.0f});
                time = next;
            }
            e.end = time;
            lists[label].push_back(e);
        }
        const auto expected = PlainCommonKeys(lists, rate);
        ASSERT_EQ(Shown(GiveCommonKeyTimes(lists, rate)), Shown(expected));
    }
}

TEST(CommonKeyTimes, StayDefinedForRatesThatNoOneHas) {
    envelopes_by_label lists;
    lists[phoneme_label("b")].emplace_back(INT32_MIN, INT32_MAX, "b").points = {
        {INT32_MIN, 5, 1.0f}, {5, INT32_MAX, 0.5f}};
    lists[phoneme_label("s")].emplace_back(INT32_MAX, INT32_MIN, "s").points = {{7, 7, 1.0f}};
    for (const float rate : {0.0f, -5.0f, 1e-9f, 1e9f, std::nanf(""), HUGE_VALF}) {
        EXPECT_GE(GiveCommonKeyTimes(lists, rate).size(), 2u);
    }
}

} // namespace
} // namespace tessarin::test
