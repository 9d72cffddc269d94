#include "apps/tessarin/batch/batch_journal.h"

#include <cstdio>
#include <filesystem>
#include <fstream>

BatchJournal::BatchJournal(const std::string& journalPath, bool isResumed) : path(journalPath) {
    const uint64_t kept = isResumed ? ReadPlaces() : 0;
    log = std::make_unique<SyncedLog>(path, kept);
}

/// Reads where the records are, and returns where the last whole line ends: a run that was killed
/// may have left a part of one.
uint64_t BatchJournal::ReadPlaces() {
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    uint64_t begin = 0;
    for (std::string line; std::getline(file, line) && !file.eof();) {
        const batch_record record = batch_record::parse(line, nullptr, false);
        if (!record.is_object() || !record.contains("name") || !record["name"].is_string()) {
            break;
        }
        places[record["name"]] = begin;
        begin += line.size() + 1;
    }
    return begin;
}

bool BatchJournal::Has(const std::string& name) const {
    const std::lock_guard guard(lock);
    return places.contains(name);
}

std::optional<batch_record> BatchJournal::Find(const std::string& name) {
    const std::lock_guard guard(lock);
    const auto place = places.find(name);
    if (place == places.end()) {
        return std::nullopt;
    }
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    file.seekg(static_cast<std::streamoff>(place->second));
    std::string line;
    std::getline(file, line);
    batch_record record = batch_record::parse(line, nullptr, false);
    return record.is_object() ? std::optional(std::move(record)) : std::nullopt;
}

void BatchJournal::Add(const batch_record& record) {
    const std::string line = record.dump(-1, ' ', false, batch_record::error_handler_t::replace);
    const uint64_t place = log->Add(line);
    const std::lock_guard guard(lock);
    places[record.at("name")] = place;
}

std::string ChecksumOf(std::string_view bytes) {
    uint64_t hash = 0xcbf29ce484222325; // FNV-1a
    for (const char each : bytes) {
        hash = (hash ^ static_cast<unsigned char>(each)) * 0x100000001b3;
    }
    char text[17];
    std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(hash));
    return text;
}
