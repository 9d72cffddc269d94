#include "session/spoken_commands.h"

#include <algorithm>
#include <cstdint>
#include <set>
#include <utility>

#include "model/accoustic_hmm.h"
#include "session/audio_samples.h"
#include "session/packed_samples.h"
#include "session/progress_bridge.h"
#include "session/spoken_language.h"
#include "tessarin/owned.h"

using namespace tessarin;

namespace {

constexpr uint32_t kUsualRateHz = 16000;
constexpr uint32_t kMinRateHz = 8000;
constexpr uint64_t kLongestSeconds = 20; ///< of an utterance
constexpr float kMaxFloorDb = 100.0f;

using name_map = std::map<uint32_t, std::string>;

PCMFormat MonoFormat(uint32_t rateHz) {
    return {rateHz << 16, 16, 1};
}

error_code FindGivenStretch(const tessarin_audio& audio, const tessarin_search_options* given,
                            std::span<const int16_t>& out) {
    tessarin_search_options options{};
    const error_code code = ReadSearchOptions(given, options);
    return code == kNoError ? FindStretch(audio, options.from_ms, options.to_ms, out) : code;
}

/// The entry of a command whose id is not known yet. Made before the controller has the command, so
/// that none is left without a name when memory ends.
name_map::node_type MakeName(std::string name) {
    name_map one;
    one.emplace(0, std::move(name));
    return one.extract(one.begin());
}

} // namespace

error_code tessarin_commands::Open(std::shared_ptr<CAccousticHMM> acousticModel,
                                   const tessarin_command_options* given) {
    tessarin_command_options options{};
    if (given != nullptr) {
        if (given->size != sizeof options) {
            return kInvalidArgument;
        }
        options = *given;
    }
    liveRateHz = options.rate_hz > 0 ? options.rate_hz : kUsualRateHz;
    if (liveRateHz < kMinRateHz || liveRateHz > kHighestRateHz ||
        !(options.floor_db >= 0.0f && options.floor_db <= kMaxFloorDb)) {
        return kOutOfRange;
    }
    model = std::move(acousticModel);
    sounds = std::make_unique<CQuibCmdCtrl>(*model, options.floor_db);
    samples = std::make_unique<CQuibAccousticCmdCtrl>();
    liveCode = samples->InitFeatures(model.get(), options.floor_db);
    return kNoError;
}

template <class Use>
error_code tessarin_commands::WithObservations(std::span<const int16_t> stretch, uint32_t rateHz,
                                               Use use) {
    SampleStream stream(stretch, rateHz);
    IObservationStream* made = nullptr;
    const error_code code = CreateObservationStreamFromQuibStream(&stream, model.get(), &made);
    const observations_owner observations(made);
    if (code != kNoError) {
        return code;
    }
    observations->SetProcessingFlags(kDecibelEnergy); // as live audio has them
    return use(*observations);
}

/// `add` gives the controller's id, or 0 for what cannot be said.
template <class Add> error_code tessarin_commands::AddSounds(const char* name, Add add) {
    name_map::node_type named = MakeName(name);
    const uint32_t id = AreSampled() ? 0 : add();
    if (id == 0) {
        return kInvalidArgument;
    }
    isSampled = false;
    named.key() = id;
    names.insert(std::move(named));
    return kNoError;
}

error_code tessarin_commands::AddText(const char* name, tessarin_language& language,
                                      const char* text) {
    text_reading how;
    how.isLiteral = true; // a command is what is said, not a script
    const SpokenLanguage spoken(language, text, how);
    if (spoken.GetCode() != kNoError) {
        return spoken.GetCode();
    }
    uint32_t count = 0;
    CTxMarker* const tokens = spoken.GetTranscriber().GetOutputMarkers(&count);
    return AddSounds(name, [&] {
        return count > 0 ? sounds->AddCommandFromMarkers(tokens, tokens + count) : 0;
    });
}

error_code tessarin_commands::AddPhonemes(const char* name, const char* phonemes) {
    return AddSounds(name, [&] { return sounds->AddCommandFromPhonemes(phonemes); });
}

error_code tessarin_commands::AddSample(const char* name, const tessarin_audio& audio,
                                        const tessarin_search_options* options) {
    std::span<const int16_t> stretch;
    const error_code code = FindGivenStretch(audio, options, stretch);
    if (code != kNoError) {
        return code;
    }
    name_map::node_type named = MakeName(name);
    return WithObservations(stretch, audio.rateHz, [&](IObservationStream& observations) {
        const uint32_t id = AreSounds() ? 0 : samples->AddCommandFromStream(&observations);
        if (id == 0 || samples->GetNumObservations(id) == 0) {
            samples->DeleteCommand(id);
            return error_code{kInvalidArgument};
        }
        isSampled = true;
        named.key() = id;
        names.insert(std::move(named));
        return error_code{kNoError};
    });
}

error_code tessarin_commands::AddPacked(std::string_view data) {
    if (AreSounds()) {
        return kInvalidArgument;
    }
    std::vector<command_sample> unpacked;
    const error_code code = UnpackSamples(data, unpacked);
    if (code != kNoError) {
        return code;
    }
    std::vector<name_map::node_type> named;
    for (const command_sample& sample : unpacked) {
        named.push_back(MakeName(sample.name));
    }
    name_map added;
    for (size_t i = 0; i < unpacked.size(); ++i) {
        const uint32_t id = samples->AddCommandFromData(unpacked[i].data.data());
        if (id == 0) {
            for (const auto& [known, name] : added) {
                samples->DeleteCommand(known);
            }
            return kInvalidFile;
        }
        named[i].key() = id;
        added.insert(std::move(named[i]));
    }
    isSampled = true;
    names.merge(added);
    return kNoError;
}

error_code tessarin_commands::Pack() {
    if (!AreSampled()) {
        return kNotAvailable;
    }
    std::vector<command_sample> all;
    for (const auto& [id, name] : names) {
        std::string data(samples->GetCommandData(id, nullptr), '\0');
        samples->GetCommandData(id, data.data());
        all.push_back({name, std::move(data)});
    }
    packed = PackSamples(all);
    return kNoError;
}

error_code tessarin_commands::Rank(const tessarin_audio& audio,
                                   const tessarin_search_options* options,
                                   const tessarin_progress* progress) {
    ranking.clear();
    std::span<const int16_t> stretch;
    const error_code code = FindGivenStretch(audio, options, stretch);
    return code == kNoError ? RankStretch(stretch, audio.rateHz, progress) : code;
}

error_code tessarin_commands::RankStretch(std::span<const int16_t> stretch, uint32_t rateHz,
                                          const tessarin_progress* progress) {
    return WithObservations(stretch, rateHz, [&](IObservationStream& observations) {
        std::vector<command_score> scores;
        ProgressBridge bridge(progress);
        const error_code code = isSampled ? samples->FindDistances(observations, scores)
                                          : sounds->ScoreCommands(observations, &bridge, scores);
        if (code == kNoError) {
            SetRanking(std::move(scores));
        }
        return code;
    });
}

/// Each name once, with its best score.
void tessarin_commands::SetRanking(std::vector<command_score> scores) {
    std::ranges::stable_sort(scores, [this](const command_score& a, const command_score& b) {
        return isSampled ? a.score < b.score : a.score > b.score;
    });
    std::set<std::string_view> ranked;
    for (const command_score& each : scores) {
        const std::string& name = names.at(each.id);
        if (ranked.insert(name).second) {
            ranking.push_back({each.score, name.c_str()});
        }
    }
}

/// What comes at another rate than the utterance before is brought to 16000 Hz, so one at the
/// model's rate goes before each that does not have it.
error_code tessarin_commands::BeginUtterance() {
    const auto modelRateHz = static_cast<uint32_t>(model->descriptor.sampleRate);
    if (liveCode != kNoError) {
        return liveCode;
    }
    error_code code = kNoError;
    if (liveRateHz != modelRateHz) {
        if (modelRateHz != kUsualRateHz) {
            return kNotAvailable;
        }
        const PCMFormat format = MonoFormat(modelRateHz);
        code = samples->BeginUtterance(&format);
    }
    const PCMFormat format = MonoFormat(liveRateHz);
    return code == kNoError ? samples->BeginUtterance(&format) : code;
}

error_code tessarin_commands::Push(std::span<const int16_t> block, bool& isOver) {
    if (block.size_bytes() > INT32_MAX) {
        return kOutOfRange;
    }
    error_code code = isUttering ? error_code{kNoError} : BeginUtterance();
    if (code != kNoError) {
        return code;
    }
    isUttering = true;
    block = block.first(
        std::min(block.size(), static_cast<size_t>(kLongestSeconds * liveRateHz - heard)));
    if (!hasEnded && !block.empty()) {
        if (!isSampled) {
            utterance.insert(utterance.end(), block.begin(), block.end());
        }
        code = samples->ProcessAudio(block.data(), static_cast<uint32_t>(block.size_bytes()));
        heard += block.size();
        hasEnded = code == kOutOfRange || heard >= kLongestSeconds * liveRateHz;
    }
    isOver = hasEnded;
    return code == kOutOfRange ? error_code{kNoError} : code;
}

error_code tessarin_commands::RankUtterance(const tessarin_progress* progress) {
    ranking.clear();
    // However the ranking ends, the next utterance begins afresh.
    const bool wasUttering = std::exchange(isUttering, false);
    const std::vector<int16_t> said = std::exchange(utterance, {});
    hasEnded = false;
    heard = 0;
    if (wasUttering && isSampled) {
        std::vector<command_score> scores;
        samples->FindLiveDistances(true, scores);
        SetRanking(std::move(scores));
        return kNoError;
    }
    return wasUttering ? RankStretch(said, liveRateHz, progress) : error_code{kNoError};
}
