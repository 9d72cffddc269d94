#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "apps/tessarin/console/synced_log.h"

/// What is known of a line: an entry of the report, and what a later run needs to trust it.
using batch_record = nlohmann::ordered_json;

/// A short form of some bytes: 16 hexadecimal digits.
std::string ChecksumOf(std::string_view bytes);

/// The records of a batch in one file that is only added to; the last of a name counts. Records
/// stay on the disk, so that memory does not grow with the list. Several threads may use it.
class BatchJournal {
public:
    /// Takes over what an earlier run wrote when `isResumed`, else begins again. Throws Failure.
    BatchJournal(const std::string& path, bool isResumed);

    /// Whether there is a record of a line under this name.
    bool Has(const std::string& name) const;
    /// The record of a line, if there is one.
    std::optional<batch_record> Find(const std::string& name);
    /// Adds a record. Throws Failure.
    void Add(const batch_record& record);
    void Sync() { log->Sync(); }

private:
    uint64_t ReadPlaces();

    std::string path;
    mutable std::mutex lock;
    std::map<std::string, uint64_t> places; ///< of the records in the file, by name
    std::unique_ptr<SyncedLog> log;
};
