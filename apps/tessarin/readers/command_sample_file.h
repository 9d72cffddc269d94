#pragma once

#include <string>
#include <vector>

/// The sample of a command as IQuibAcousticCmdCtrl gives and takes it.
struct command_sample {
    std::string name;
    std::string data;
};

/// A file of samples: one after the other, so that a host can hand them to a
/// controller as they are; then "name" and the samples' names in that order, each with a zero byte
/// at its end. Samples without names are named by their ids. Both throw Failure.
std::vector<command_sample> ReadCommandSamples(const std::string& path);
void WriteCommandSamples(const std::string& path, const std::vector<command_sample>& samples);
