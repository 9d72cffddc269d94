#include <algorithm>
#include <cstdint>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <utf8.h>

#include "tool/run_tool.h"

// docs/text.md shows what the tool says of difficult text. Its tables are held to it here.

namespace {

using nlohmann::json;

struct page_row {
    std::string text;
    std::string said;
};

/// The content of the code span that `line` has next, without the bars' escapes.
std::string NextCode(std::istringstream& line) {
    std::string code;
    std::getline(line, code, '`');
    std::getline(line, code, '`');
    for (size_t escape = code.find("\\|"); escape != std::string::npos; escape = code.find("\\|")) {
        code.erase(escape, 1);
    }
    return code;
}

std::vector<page_row> ReadRows() {
    std::istringstream page(ReadFile(TESSARIN_SOURCE_DIR "/docs/text.md"));
    std::vector<page_row> rows;
    for (std::string line; std::getline(page, line);) {
        if (line.starts_with("| `")) {
            std::istringstream cells(line);
            const std::string text = NextCode(cells);
            rows.push_back({text, NextCode(cells)});
        }
    }
    return rows;
}

/// A token as the page writes it.
std::string Said(const json& token) {
    std::string groups;
    for (const json& group : token["phonemes"]) {
        groups += groups.empty() ? "" : " ";
        for (size_t i = 0; i < group.size(); ++i) {
            groups += (i > 0 ? "|" : "") + group[i].get<std::string>();
        }
    }
    const std::string kind = token["kind"];
    if (kind == "cut") {
        return "cut:" + std::to_string(token["cut_ms"].get<int>());
    }
    if (kind == "tag") {
        return groups.empty() ? "tag" : "tag:" + groups;
    }
    return groups.empty() ? "()" : groups;
}

/// Reads all rows as one text, as `encode` writes it, and compares what is said of each.
template <class Encode> void ExpectAsOnThePage(const std::vector<page_row>& rows, Encode encode) {
    std::string text;
    std::vector<size_t> ends;
    for (const page_row& row : rows) {
        text += encode(row.text + "\n");
        ends.push_back(text.size());
    }
    const tool_run run = RunTool("transcribe - --literal --format json", text);
    ASSERT_EQ(run.exitCode, 0) << run.errors;
    std::vector<std::string> said(rows.size());
    const json result = json::parse(run.output);
    for (const json& token : result["tokens"]) {
        const auto end = std::ranges::upper_bound(ends, token["text_offset"].get<size_t>());
        ASSERT_NE(end, ends.end());
        std::string& row = said[static_cast<size_t>(end - ends.begin())];
        row += (row.empty() ? "" : " / ") + Said(token);
    }
    for (size_t i = 0; i < rows.size(); ++i) {
        EXPECT_EQ(said[i], rows[i].said) << rows[i].text;
    }
}

TEST(DifficultText, IsSaidAsItsPageTells) {
    const std::vector<page_row> rows = ReadRows();
    ASSERT_GT(rows.size(), 70u);
    ExpectAsOnThePage(rows, [](const std::string& line) { return line; });
}

TEST(DifficultText, IsSaidAlikeInUtf16) {
    ExpectAsOnThePage(ReadRows(), [](const std::string& line) {
        std::string bytes;
        for (const char16_t unit : utf8::utf8to16(line)) {
            bytes += static_cast<char>(unit & 0xFF);
            bytes += static_cast<char>(unit >> 8);
        }
        return bytes;
    });
}

/// The byte of a character in code page 1252, or 0 where the page has none.
char In1252(char32_t character) {
    static const std::map<char32_t, uint8_t> kPlaced = {
        {U'€', 0x80}, {U'…', 0x85}, {U'‘', 0x91}, {U'’', 0x92}, {U'“', 0x93},
        {U'”', 0x94}, {U'–', 0x96}, {U'—', 0x97}, {U'™', 0x99},
    };
    const auto placed = kPlaced.find(character);
    const char32_t byte = placed != kPlaced.end() ? placed->second : character;
    return static_cast<char>(byte < 0x100 ? byte : 0);
}

TEST(DifficultText, IsSaidAlikeInCodePage1252) {
    const auto encode = [](const std::string& line) {
        std::string bytes;
        for (const char32_t character : utf8::utf8to32(line)) {
            bytes += In1252(character);
        }
        return bytes;
    };
    std::vector<page_row> rows = ReadRows();
    const size_t all = rows.size();
    std::erase_if(rows, [&](const page_row& row) {
        return encode(row.text).find('\0') != std::string::npos;
    });
    EXPECT_EQ(rows.size(), all - 1) << "one row has names that the page cannot write";
    ExpectAsOnThePage(rows, encode);
}

} // namespace
