#pragma once

#include <cstddef>
#include <vector>

#include "apps/train/random.h"

namespace tessarin::training {

/// Samples of one channel in the range of 16-bit audio.
struct recording {
    std::vector<float> samples;
    double rate = 0.0; ///< Hz
};

/// What makes one speaker in one room through one microphone sound like another: drawn once a copy.
struct changed_copy {
    recording speech;
    double speed = 1.0; ///< times of the original are divided by it
};

/// How many of all copies are in noise that is 4 to 28 dB softer than the speech, and how many in
/// none; the others are in noise of 28 to 55 dB less.
struct noise_shares {
    double loud;
    double none;
};

/// A copy of `original` that is spoken faster or slower with another pitch and vocal tract, and
/// possibly heard through another microphone, in a room, by telephone, at another level, and in
/// noise. `voices` are recordings to make babble of.
changed_copy ChangeSpeech(const recording& original, const std::vector<recording>& voices,
                          const noise_shares& shares, random_source& random);

// The single changes, each in place or to a new recording.

/// Plays the recording `speed` times as fast, by band-limited interpolation.
recording ChangeSpeed(const recording& original, double speed);
/// A room: the direct sound and a tail of scattered reflections that dies away, by 60 dB in
/// `decayS` seconds, and is `directToReverberantDb` softer than the direct sound.
void AddEcho(recording& speech, double decayS, double directToReverberantDb, random_source& random);
void ChangeLevel(recording& speech, double db);
/// A band of 300 to 3400 Hz.
void BandLimitToTelephone(recording& speech);
/// Adds noise of the given kind so that the speech's level over its active stretches is `snrDb`
/// above the level of the noise, which wanders by `wanderDb` to either side.
enum class noise_kind { kWhite, kPink, kRumble, kHum, kBabble };
void AddNoise(recording& speech, noise_kind kind, double snrDb, double wanderDb,
              const std::vector<recording>& voices, random_source& random);
/// Whole samples; what lies outside the range of 16 bits is cut off, as a recorder does it.
void RoundToSamples(recording& speech);

} // namespace tessarin::training
