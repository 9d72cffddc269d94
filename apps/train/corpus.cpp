#include "apps/train/corpus.h"

#include <fstream>
#include <sstream>

#include "model/phoneme_alphabet.h"

namespace tessarin::training {
namespace {

bool ReadPhones(const std::string& path, std::vector<phone_interval>& phones) {
    std::ifstream file(path);
    phone_interval interval{};
    std::string label;
    while (file >> interval.start_ms >> interval.end_ms >> label) {
        const phoneme_symbol* symbol = FindPhonemeSymbol(label);
        if (symbol == nullptr) {
            return false;
        }
        interval.phone = static_cast<size_t>(symbol - PhonemeAlphabet().data());
        phones.push_back(interval);
    }
    return file.eof() && !phones.empty();
}

} // namespace

std::vector<utterance> ReadCorpus(const std::string& directory, std::string& error) {
    std::ifstream file(directory + "/corpus.tsv");
    std::vector<utterance> corpus;
    std::string line;
    while (std::getline(file, line)) {
        std::istringstream columns(line);
        utterance entry;
        std::string kind;
        if (!std::getline(columns, entry.name, '\t') ||
            !std::getline(columns, entry.speaker, '\t') ||
            !std::getline(columns, entry.purpose, '\t') || !std::getline(columns, kind, '\t') ||
            !std::getline(columns, entry.text)) {
            error = directory + "/corpus.tsv: malformed line: " + line;
            return {};
        }
        entry.path = directory + "/" + entry.name;
        const std::string times = entry.path.substr(0, entry.path.rfind('.')) + ".lab";
        if (kind == "timed" && !ReadPhones(times, entry.phones)) {
            error = times + ": no phone times, or phones that are not in the alphabet";
            return {};
        }
        corpus.push_back(std::move(entry));
    }
    if (corpus.empty()) {
        error = directory + "/corpus.tsv: cannot be read, or is empty";
    }
    return corpus;
}

} // namespace tessarin::training
