#include "tool/run_tool.h"

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>

#include <sys/wait.h>
#include <unistd.h>

#include "support/riff_builder.h"

namespace fs = std::filesystem;

tool_run RunTool(const std::string& arguments, const std::string& input) {
    const ScratchFolder scratch;
    WriteFile(scratch.Path("in"), input);
    const std::string command = std::string(TESSARIN_TOOL) + " " + arguments + " <" +
                                scratch.Path("in") + " >" + scratch.Path("out") + " 2>" +
                                scratch.Path("err");
    const int status = std::system(command.c_str());
    tool_run run;
    run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    run.output = ReadFile(scratch.Path("out"));
    run.errors = ReadFile(scratch.Path("err"));
    return run;
}

ScratchFolder::ScratchFolder() {
    static int counter = 0;
    folder = fs::temp_directory_path() /
             ("tessarin_test_" + std::to_string(getpid()) + "_" + std::to_string(++counter));
    fs::create_directories(folder);
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    fs::remove_all(folder, ignored);
}

std::string ReadFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void WriteFile(const fs::path& path, const std::string& content) {
    std::ofstream(path, std::ios::binary) << content;
}

std::vector<int16_t> SamplesOf(const std::string& wav) {
    constexpr size_t kHeaderSize = 44;
    std::vector<int16_t> samples((wav.size() - kHeaderSize) / sizeof(int16_t));
    std::memcpy(samples.data(), wav.data() + kHeaderSize, samples.size() * sizeof(int16_t));
    return samples;
}

void WriteWav(const fs::path& path, const std::vector<int16_t>& samples, uint32_t rateHz,
              uint16_t channels) {
    const auto wav = tessarin::test::WavFile(rateHz, channels, samples);
    WriteFile(path, {wav.begin(), wav.end()});
}

std::string DemoRecording() {
    return TESSARIN_SOURCE_DIR "/data/demo/echo-test.wav";
}

std::string DemoText() {
    return TESSARIN_SOURCE_DIR "/data/demo/echo-test.txt";
}
