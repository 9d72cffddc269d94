#include <algorithm>
#include <cmath>
#include <ostream>
#include <span>
#include <utility>

#include "model/accoustic_hmm.h"
#include "model/owned_file.h"

namespace tessarin {
namespace {

void WriteRow(std::ostream& text, std::span<const float> values) {
    const char* separator = "";
    for (const float value : values) {
        text << separator << value;
        separator = " ";
    }
    text << '\n';
}

void WriteState(std::ostream& text, const CAccousticHMMState& state) {
    for (const CGaussMixture& mixture : state.mixtures) {
        text << "c: " << mixture.weight << '\n';
        WriteRow(text, mixture.mean);
        WriteRow(text, mixture.inverseCovariance);
        text << "gConst: " << mixture.gConst << '\n';
    }
    text << "A:\n";
    WriteRow(text, state.transitions);
}

void PrintRow(std::FILE* file, std::span<const float> values) {
    for (const float value : values) {
        std::fprintf(file, "%f ", static_cast<double>(value));
    }
    std::fputc('\n', file);
}

void PrintMixture(std::FILE* file, const CGaussMixture& mixture) {
    std::fprintf(file, "Weight: %f\n", std::log(mixture.weight));
    std::fputs("Mean_vector:\n", file);
    PrintRow(file, mixture.mean);
    std::fputs("\nInverse_covariance_matrix:\n", file);
    PrintRow(file, mixture.inverseCovariance);
    std::fprintf(file, "gConst: %f\n\n", std::log(mixture.gConst));
}

/// The transitions of a phoneme between an entry node in front of its states and an exit node
/// after them.
float_matrix NodeTransitions(const CSingleAccHmm& model) {
    const size_t count = model.states.size();
    float_matrix nodes(count + 2, count + 2);
    nodes[0][1] = 1.0f;
    for (size_t state = 0; state < count; ++state) {
        const std::vector<float>& row = model.states[state].transitions;
        std::copy(row.begin(), row.end(), nodes[state + 1] + 1);
    }
    nodes[count][count + 1] = 1.0f - nodes[count][count];
    return nodes;
}

void PrintNodeTransitions(std::FILE* file, const CSingleAccHmm& model) {
    const float_matrix nodes = NodeTransitions(model);
    for (size_t from = 0; from < nodes.GetRows(); ++from) {
        for (size_t to = 0; to < nodes.GetColumns(); ++to) {
            if (nodes[from][to] == 0.0f) {
                std::fputs("-10000000000 ", file);
            } else {
                std::fprintf(file, "%f ", static_cast<double>(nodes[from][to]));
            }
        }
        std::fputc('\n', file);
    }
}

} // namespace

void CAccousticHMM::WriteTextDump(std::ostream& text) {
    text << "zhmm\n"
         << "numModels: " << numModels << '\n'
         << "numStatesPerModel: " << numStates << '\n'
         << "numMixturesPerState: " << numMixtures << '\n';
    descriptor.WriteText(text);
    for (const CSingleAccHmm& model : models) {
        text << "zhmm\n";
        for (const CAccousticHMMState& state : model.states) {
            WriteState(text, state);
        }
    }
    text << "Aij\n";
    for (size_t from = 0; from < transitions.GetRows(); ++from) {
        WriteRow(text, {transitions[from], transitions.GetColumns()});
    }
    for (const std::string& label : labels) {
        text << label << '\n';
    }
    for (const std::optional<std::string>& info : {phonemeInfo1, phonemeInfo2}) {
        if (info) {
            text << *info << '\n';
        }
    }
}

bool CAccousticHMM::WriteDatabaseText(const char* path) {
    owned_file file = OpenFile(path, "w+");
    if (!file) {
        return false;
    }
    // Kept: "window_lenght" and the fixed lines are what readers of this form look for.
    std::fputs("DBASE_OPERATIVE_FEATURES:\n"
               "file_type: Features_File\n"
               "label: 4\n"
               "file_list: timit.lst\n",
               file.get());
    std::fprintf(file.get(), "window_lenght: %d\n", descriptor.windowSize);
    std::fprintf(file.get(), "window_overlap: %d\n\n", descriptor.windowOverlap);
    std::fprintf(file.get(), "statistics_dimension: %d\n\n", descriptor.numFeatures);
    std::fputs("type_of_matrix: diagonal\n", file.get());
    for (int32_t i = 0; i < numModels; ++i) {
        WritePhonemeDescription(file.get(), i);
    }
    return FinishFile(std::move(file));
}

void CAccousticHMM::WritePhonemeDescription(std::FILE* file, int32_t modelIndex) {
    if (modelIndex < 0 || static_cast<size_t>(modelIndex) >= models.size()) {
        return;
    }
    const CSingleAccHmm& model = models[static_cast<size_t>(modelIndex)];
    std::fprintf(file, "\nSPECTRAL_DESCRIPTION_OF_PHONEME: %d\n", modelIndex);
    std::fprintf(file, "Graph_nodes_number: %d\n", numStates + 2);
    std::fprintf(file, "Num_gauss: %d\n", numMixtures);
    for (size_t state = 0; state < model.states.size(); ++state) {
        std::fprintf(file, "\nState: %d\n", static_cast<int>(state));
        for (const CGaussMixture& mixture : model.states[state].mixtures) {
            PrintMixture(file, mixture);
        }
    }
    std::fputs("Transition_probabilities_matrix:\n", file);
    PrintNodeTransitions(file, model);
    std::fputs("END_OF_PHONEME_DESCRIPTION.\n", file);
}

} // namespace tessarin
