#pragma once

#include <string>
#include <vector>

/// The loudness of each 10 ms of a recording, in dB of full scale. `channel` counts from 1; 0 means
/// the mean of all channels. Throws Failure.
std::vector<float> MeasureLoudness(const std::string& path, int channel);
