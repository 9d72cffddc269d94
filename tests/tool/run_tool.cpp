#include "tool/run_tool.h"

#include <cstdlib>
#include <fstream>
#include <iterator>

#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

std::string DemoFile(const char* extension) {
    for (const auto& entry : fs::directory_iterator(TESSARIN_SOURCE_DIR "/data/demo")) {
        if (entry.path().extension() == extension) {
            return entry.path().string();
        }
    }
    return {};
}

} // namespace

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

std::string DemoRecording() {
    return DemoFile(".wav");
}

std::string DemoText() {
    return DemoFile(".txt");
}
