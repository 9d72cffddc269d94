#pragma once

#include <functional>
#include <string>

#include "apps/tessarin/commands/commands.h"
#include "apps/tessarin/options/engine_data.h"
#include "apps/tessarin/options/gate_options.h"
#include "apps/tessarin/options/mouth_track.h"
#include "apps/tessarin/readers/recording.h"
#include "apps/tessarin/writers/outputs.h"

class SpokenText;
struct match_report;

/// What the commands that make a mouth track from a recording have in common.
struct recording_options {
    std::string audio;
    data_options data;
    std::string channel = "1";
    recording_stretch stretch;
    gate_options gate;
    std::string adapt = "auto"; ///< the model to the voice, without a text: auto, on or off
    track_options track;
    output_options outputs;
    bool quiet = false;
    bool progressLines = false; // for programs that start the tool
};

/// The recording, the model, how it is listened to and how the track is made.
void AddListeningOptions(CLI::App& command, recording_options* options);

/// Of these, the model and its folder; and all that may differ from one recording to the next.
void AddModelOptions(CLI::App& command, data_options* options);
void AddHearingOptions(CLI::App& command, recording_options* options);

/// --adapt, for searches without a text.
void AddAdaptOption(CLI::App& command, recording_options* options);

/// These, and the outputs.
void AddRecordingOptions(CLI::App& command, recording_options* options);

/// What --channel means to OpenRecording.
int ChannelNumber(const std::string& channel);

/// The search of a command: it fills the results and, for a text, the report, and returns the
/// engine's code.
using recording_search = std::function<int32_t(
    opened_recording& recording, tessarin::CAccousticHMM& model, tessarin::ProgressSink& progress,
    tessarin::ISyncResultsCollection& results, match_report& report)>;

/// Opens the recording, searches it and makes the mouth track; `text`, null when there is none, is
/// what is said. The code of the result is 0, or 8 when the search lost the text. Throws Failure.
timed_result FindTimings(const recording_options& options, tessarin::CAccousticHMM& model,
                         const SpokenText* text, const recording_search& search);

/// The same with a progress of its own, which several threads may do at once.
timed_result FindTimings(const recording_options& options, tessarin::CAccousticHMM& model,
                         const SpokenText* text, const recording_search& search,
                         tessarin::ProgressSink& progress);

/// Throws Failure where the search lost the text, with what is known of the reason.
void RequireFound(const timed_result& result);

/// FindTimings, and writes all that was found, which is returned. Throws Failure; when the search
/// lost the text, only after what it found was written.
timed_result AnimateRecording(const recording_options& options, tessarin::CAccousticHMM& model,
                              const SpokenText* text, const recording_search& search);
