#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

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

TEST(DifficultText, IsSaidAsItsPageTells) {
    const std::vector<page_row> rows = ReadRows();
    ASSERT_GT(rows.size(), 70u);
    std::string text;
    std::vector<size_t> ends;
    for (const page_row& row : rows) {
        text += row.text + "\n";
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

} // namespace
