#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tool/run_tool.h"

namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr const char* kSounds = "_ 200\nm 90\nAA 200\np 80\nUW 240\n_ 200\n";

std::string Animate(const std::string& options) {
    const tool_run run = RunTool("animate - " + options, kSounds);
    EXPECT_EQ(run.exitCode, 0) << options << ": " << run.errors;
    return run.output;
}

std::vector<std::vector<std::string>> ReadCsv(const std::string& text) {
    std::vector<std::vector<std::string>> rows;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream cells(line);
        rows.emplace_back();
        for (std::string cell; std::getline(cells, cell, ',');) {
            rows.back().push_back(cell);
        }
    }
    return rows;
}

uint32_t NumberAt(const std::string& bytes, size_t place) {
    uint32_t number = 0;
    std::memcpy(&number, bytes.data() + place, sizeof number);
    return number;
}

/// A binary glTF file, by the words of its format.
struct glb {
    json root;
    std::string binary;

    explicit glb(const std::string& bytes) {
        EXPECT_EQ(bytes.substr(0, 4), "glTF");
        EXPECT_EQ(NumberAt(bytes, 8), bytes.size());
        const uint32_t length = NumberAt(bytes, 12);
        root = json::parse(bytes.substr(20, length));
        binary = bytes.substr(28 + length);
    }

    std::vector<float> Floats(size_t accessor) const {
        const json& of = root.at("accessors").at(accessor);
        const json& view = root.at("bufferViews").at(of.at("bufferView").get<size_t>());
        std::vector<float> values(view.at("byteLength").get<size_t>() / sizeof(float));
        std::memcpy(values.data(), binary.data() + view.at("byteOffset").get<size_t>(),
                    values.size() * sizeof(float));
        return values;
    }

    /// Column `column` of `width` of a sampler, at a time in seconds.
    double ValueAt(const json& sampler, double seconds, size_t column, size_t width) const {
        const std::vector<float> times = Floats(sampler.at("input"));
        const std::vector<float> values = Floats(sampler.at("output"));
        EXPECT_EQ(values.size(), times.size() * width);
        size_t next = 1;
        while (next + 1 < times.size() && times[next] < seconds) {
            ++next;
        }
        const double share = (seconds - times[next - 1]) / (times[next] - times[next - 1]);
        const double from = values[(next - 1) * width + column];
        return from + share * (values[next * width + column] - from);
    }
};

/// A user's file: two meshes that speak in part, one that does not, and an animation.
std::string UsersGlb(const json& changes = json::object()) {
    json root = json::parse(R"({
        "asset": {"version": "2.0"}, "buffers": [{"byteLength": 37}],
        "bufferViews": [{"buffer": 0, "byteLength": 36}],
        "accessors": [{"bufferView": 0, "componentType": 5126, "count": 3, "type": "VEC3",
                       "min": [0, 0, 0], "max": [0, 0, 0]}],
        "meshes": [
            {"primitives": [{"attributes": {"POSITION": 0}, "targets": [
                 {"POSITION": 0}, {"POSITION": 0}, {"POSITION": 0}]}],
             "weights": [0, 0.25, 0],
             "extras": {"targetNames": ["Face.viseme_aa", "Smile", "viseme_PP"]}},
            {"primitives": [{"attributes": {"POSITION": 0}}]},
            {"primitives": [{"attributes": {"POSITION": 0}, "targets": [{"POSITION": 0}],
                             "extras": {"targetNames": ["AA"]}}]}],
        "nodes": [{"mesh": 1}, {"mesh": 0}, {"mesh": 2}],
        "animations": [{"name": "walk", "samplers": [], "channels": []}],
        "extras": {"mine": 1}})");
    root.merge_patch(changes);
    std::string text = root.dump();
    text.resize((text.size() + 3) / 4 * 4, ' ');
    const std::string binary(40, '\x01');
    std::string bytes = "glTF";
    for (const size_t number : {size_t{2}, 28 + text.size() + binary.size(), text.size()}) {
        const auto value = static_cast<uint32_t>(number);
        bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
    }
    const auto length = static_cast<uint32_t>(binary.size());
    return bytes + "JSON" + text +
           std::string(reinterpret_cast<const char*>(&length), sizeof length) +
           std::string("BIN\0", 4) + binary;
}

TEST(AnimationFiles, AHeadOfOurOwnSpeaksAsTheTableSays) {
    for (const auto& [format, table] : {std::pair("glb", "arkit"), {"visemes-glb", "visemes"}}) {
        SCOPED_TRACE(format);
        const glb head(Animate(std::string("--fps 60 --format ") + format));
        const auto rows = ReadCsv(Animate(std::string("--fps 60 --format ") + table));
        const json names = head.root["meshes"][0]["extras"]["targetNames"];
        ASSERT_EQ(names.size() + 1, rows[0].size());
        for (const json& primitive : head.root["meshes"][0]["primitives"]) {
            EXPECT_EQ(primitive["targets"].size(), names.size());
        }
        const json& sampler = head.root["animations"][0]["samplers"][0];
        EXPECT_EQ(head.root["animations"][0]["channels"][0]["target"]["path"], "weights");
        for (size_t row = 1; row < rows.size(); ++row) {
            for (size_t i = 0; i < names.size(); ++i) {
                EXPECT_EQ(names[i], rows[0][i + 1]);
                const double ms = std::stod(rows[row][0]);
                EXPECT_NEAR(head.ValueAt(sampler, ms / 1000, i, names.size()),
                            std::stod(rows[row][i + 1]), 0.0052)
                    << names[i] << " at " << ms;
            }
        }
    }
}

TEST(AnimationFiles, TheHeadOpensItsJawAndSmilesOnOneSide) {
    const glb head(Animate("--format glb"));
    const json& mesh = head.root["meshes"][0];
    const auto moves = [&](const std::string& name) {
        const json& names = mesh["extras"]["targetNames"];
        const auto target =
            static_cast<size_t>(std::find(names.begin(), names.end(), name) - names.begin());
        std::vector<std::pair<float, float>>
            found; // where a vertex is across, and how far it rises
        for (const json& primitive : mesh["primitives"]) {
            const auto places = head.Floats(primitive["attributes"]["POSITION"]);
            const auto moved = head.Floats(primitive["targets"][target]["POSITION"]);
            for (size_t i = 0; i < moved.size(); i += 3) {
                found.emplace_back(places[i], moved[i + 1]);
            }
        }
        return found;
    };
    const auto lowest = [](const auto& all) {
        return std::min_element(all.begin(), all.end(),
                                [](const auto& a, const auto& b) { return a.second < b.second; })
            ->second;
    };
    EXPECT_LT(lowest(moves("jawOpen")), -0.015f);
    EXPECT_GT(lowest(moves("mouthSmileLeft")), -0.004f);
    for (const auto& [across, rise] : moves("mouthSmileLeft")) {
        EXPECT_TRUE(across > -0.01f || std::abs(rise) < 1e-6f) << across;
    }
}

TEST(AnimationFiles, AUsersFileGetsOneMoreAnimationAndKeepsTheRest) {
    const ScratchFolder scratch;
    const std::string users = scratch.Path("users.glb");
    const std::string spoken = scratch.Path("spoken.glb");
    WriteFile(users, UsersGlb());
    Animate("-o " + spoken + " --into " + users);
    const glb file(ReadFile(spoken));
    EXPECT_EQ(file.root["extras"]["mine"], 1);
    EXPECT_EQ(file.binary.substr(0, 37), std::string(37, '\x01'));
    EXPECT_EQ(file.root["buffers"][0]["byteLength"], file.binary.size());
    ASSERT_EQ(file.root["animations"].size(), 2u);
    EXPECT_EQ(file.root["animations"][0]["name"], "walk");

    const json& animation = file.root["animations"][1];
    ASSERT_EQ(animation["channels"].size(), 2u);
    EXPECT_EQ(animation["channels"][0]["target"]["node"], 1);
    EXPECT_EQ(animation["channels"][1]["target"]["node"], 2);
    const json& sampler = animation["samplers"][0];
    EXPECT_NEAR(file.ValueAt(sampler, 0.24, 2, 3), 1.0, 0.1) << "closed at the m";
    EXPECT_GT(file.ValueAt(sampler, 0.40, 0, 3), 0.5) << "open at the AA";
    EXPECT_EQ(file.ValueAt(sampler, 0.40, 1, 3), 0.25) << "as the model smiles by itself";
    EXPECT_GT(file.ValueAt(animation["samplers"][1], 0.40, 0, 1), 0.5);

    Animate("-o " + spoken + " --into " + spoken + " --fps 60");
    EXPECT_EQ(glb(ReadFile(spoken)).root["animations"].size(), 2u) << "its own is replaced";

    // A file of text that names its buffer can be written only beside it.
    const std::string text = scratch.Path("users.gltf");
    json root = file.root;
    root["buffers"][0]["uri"] = "users.bin";
    WriteFile(text, root.dump());
    Animate("-o " + scratch.Path("out.gltf") + " --into " + text);
    EXPECT_EQ(json::parse(ReadFile(scratch.Path("out.gltf")))["buffers"][0]["uri"], "users.bin");
    const tool_run elsewhere = RunTool("animate - -o /x.gltf --into " + text, kSounds);
    EXPECT_THAT(elsewhere.errors, HasSubstr("must be in the folder of"));
}

TEST(AnimationFiles, SaysWhatIsWrongWithAUsersFile) {
    const ScratchFolder scratch;
    const std::string good = UsersGlb();
    const auto changed = [&](size_t place, char byte) {
        std::string bytes = good;
        bytes[place] = byte;
        return bytes;
    };
    const auto nested = [] { return std::string(100000, '[') + std::string(100000, ']'); };
    const struct {
        std::string bytes;
        const char* message;
    } cases[] = {
        {changed(4, 1), "its version is 1"},
        {changed(15, 0x7f), "it is cut short"},
        {changed(16, 'X'), "does not begin with its JSON"},
        {good.substr(0, 15), "it is cut short"},
        {good.substr(0, good.size() - 1), "it is cut short"},
        {"", "its JSON cannot be read"},
        {"RIFF", "its JSON cannot be read"},
        {nested(), "nested too deeply"},
        {R"({"asset": {"version": "1.0"}})", "there is no asset of version 2"},
        {R"({"asset": {"version": "2.0"}})", "has no morph targets with names"},
        {UsersGlb({{"nodes", {{{"mesh", 7}}}}}), "node 0 has a mesh that is not there"},
        {UsersGlb({{"nodes", {{{"mesh", -1}}}}}), "mesh is missing or is not a whole number"},
        {UsersGlb({{"nodes", {1}}}), "nodes has what is not an object"},
        {UsersGlb({{"meshes", 1}}), "meshes is not a list"},
        {UsersGlb({{"buffers", {{{"byteLength", 41}}}}}), "its buffer is shorter than it says"},
        {UsersGlb({{"buffers", {json::object()}}}), "byteLength is missing"},
        {UsersGlb(json::parse(R"({"meshes": [{"primitives": [{"targets": [{}]}],
             "extras": {"targetNames": ["Grin"]}}], "nodes": [{"mesh": 0}]})")),
         "none of its morph targets (Grin) is called after a shape of arkit, visemes, vrm"},
    };
    for (const auto& [bytes, message] : cases) {
        WriteFile(scratch.Path("bad.glb"), bytes);
        const tool_run run =
            RunTool("animate - --format glb --into " + scratch.Path("bad.glb"), kSounds);
        EXPECT_EQ(run.exitCode, 2) << message;
        EXPECT_EQ(run.output, "");
        EXPECT_THAT(run.errors, HasSubstr(message));
    }
    EXPECT_EQ(RunTool("animate - --into x.glb", kSounds).exitCode, 1) << "no output takes it";
}

TEST(AnimationFiles, VrmExpressionsAreTranslationsOfTheirNodes) {
    const glb file(Animate("--fps 60 --format vrma"));
    const auto rows = ReadCsv(Animate("--fps 60 --format vrm"));
    const json& extension = file.root["extensions"]["VRMC_vrm_animation"];
    EXPECT_EQ(extension["specVersion"], "1.0");
    const json& preset = extension["expressions"]["preset"];
    ASSERT_EQ(preset.size(), 5u);
    size_t keys = 0;
    for (size_t i = 1; i < rows[0].size(); ++i) {
        const json& node = preset[rows[0][i]]["node"];
        const json& channel = file.root["animations"][0]["channels"][node.get<size_t>()];
        EXPECT_EQ(channel["target"]["node"], node);
        EXPECT_EQ(channel["target"]["path"], "translation");
        const json& sampler =
            file.root["animations"][0]["samplers"][channel["sampler"].get<size_t>()];
        keys += file.Floats(sampler["input"]).size();
        for (size_t row = 1; row < rows.size(); ++row) {
            EXPECT_NEAR(file.ValueAt(sampler, std::stod(rows[row][0]) / 1000, 0, 3),
                        std::stod(rows[row][i]), 0.0052);
        }
    }
    EXPECT_LT(keys, (rows.size() - 1) * 5 / 2) << "keys where the curves bend";
}

TEST(AnimationFiles, CaptureTablesHaveTheirColumnsAndTimecodes) {
    const auto captured = ReadCsv(Animate("--fps 60 --format capture"));
    const auto arkit = ReadCsv(Animate("--fps 60 --format arkit"));
    ASSERT_EQ(captured.size(), arkit.size());
    const auto& header = captured[0];
    ASSERT_EQ(header.size(), 63u);
    EXPECT_EQ(header[0] + "," + header[1] + "," + header[2],
              "Timecode,BlendShapeCount,EyeBlinkLeft");
    EXPECT_THAT(std::vector<std::string>(header.begin() + 16, header.begin() + 20),
                ElementsAre("JawForward", "JawRight", "JawLeft", "JawOpen"));
    EXPECT_EQ(header[53] + "," + header[54] + "," + header[62], "TongueOut,HeadYaw,RightEyeRoll");
    EXPECT_EQ(captured[1][0], "00:00:00:00.000");
    EXPECT_EQ(captured[61][0], "00:00:01:00.000");
    const auto jaw = std::find(arkit[0].begin(), arkit[0].end(), "jawOpen") - arkit[0].begin();
    double most = 0;
    for (size_t row = 1; row < captured.size(); ++row) {
        ASSERT_EQ(captured[row].size(), 63u);
        EXPECT_EQ(captured[row][1], "61");
        const double open = std::stod(captured[row][19]);
        EXPECT_NEAR(open, std::stod(arkit[row][static_cast<size_t>(jaw)]), 1e-4);
        most = std::max(most, open);
    }
    EXPECT_GT(most, 0.3);
    const tool_run odd = RunTool("animate - --format capture --fps 24", kSounds);
    EXPECT_EQ(odd.exitCode, 1);
    EXPECT_THAT(odd.errors, HasSubstr("give --fps 30 or --fps 60"));
}

} // namespace
