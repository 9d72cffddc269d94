#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

struct tool_run {
    int exitCode = -1;
    std::string output;
    std::string errors;
};

/// Runs the tool with `arguments`, as a shell reads them, and `input` on its standard input.
tool_run RunTool(const std::string& arguments, const std::string& input = "");

/// A folder for the files of one test, empty at first and removed with the object.
class ScratchFolder {
public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    std::string Path(const std::string& name) const { return (folder / name).string(); }

private:
    std::filesystem::path folder;
};

std::string ReadFile(const std::filesystem::path& path);
void WriteFile(const std::filesystem::path& path, const std::string& content);

/// Samples of a WAV file with a header of 44 bytes, such as the demo recording.
std::vector<int16_t> SamplesOf(const std::string& wav);
/// Writes a WAV file of interleaved samples.
void WriteWav(const std::filesystem::path& path, const std::vector<int16_t>& samples,
              uint32_t rateHz = 16000, uint16_t channels = 1);

/// The demo recording, or the text that is said in it.
std::string DemoRecording();
std::string DemoText();
