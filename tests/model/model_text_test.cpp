#include "support/tiny_model.h"

#include <gtest/gtest.h>

#include <sstream>

namespace tessarin {
namespace {

using test::tiny_model;

std::unique_ptr<CAccousticHMM> OneStateModel() {
    auto model = tiny_model{.labels = {"x"}, .numStates = 1, .selfLoop = 0.75f}.Make();
    CGaussMixture& mixture = model->models[0].states[0].mixtures[0];
    mixture.mean = {0.5f, -1.0f};
    mixture.weight = 1.0;
    mixture.gConst = 2.0;
    return model;
}

TEST(ModelText, DumpsEverythingInFileOrder) {
    const auto model = OneStateModel();
    model->phonemeInfo1 = "information";
    std::ostringstream features;
    model->descriptor.WriteText(features);
    std::ostringstream text;
    model->WriteTextDump(text);
    EXPECT_EQ(text.str(), "zhmm\n"
                          "numModels: 1\n"
                          "numStatesPerModel: 1\n"
                          "numMixturesPerState: 1\n" +
                              features.str() +
                              "zhmm\n"
                              "c: 1\n"
                              "0.5 -1\n"
                              "4 4\n"
                              "gConst: 2\n"
                              "A:\n"
                              "0.75\n"
                              "Aij\n"
                              "1\n"
                              "x\n"
                              "information\n");
}

TEST(ModelText, DatabaseTextHasItsFixedLinesAndLogarithms) {
    const test::TempFile file(".txt");
    const auto model = OneStateModel();
    ASSERT_TRUE(model->WriteDatabaseText(file.Path()));
    EXPECT_EQ(file.Content(), "DBASE_OPERATIVE_FEATURES:\n"
                              "file_type: Features_File\n"
                              "label: 4\n"
                              "file_list: timit.lst\n"
                              "window_lenght: 512\n"
                              "window_overlap: 352\n\n"
                              "statistics_dimension: 2\n\n"
                              "type_of_matrix: diagonal\n"
                              "\nSPECTRAL_DESCRIPTION_OF_PHONEME: 0\n"
                              "Graph_nodes_number: 3\n"
                              "Num_gauss: 1\n"
                              "\nState: 0\n"
                              "Weight: 0.000000\n"
                              "Mean_vector:\n"
                              "0.500000 -1.000000 \n"
                              "\nInverse_covariance_matrix:\n"
                              "4.000000 4.000000 \n"
                              "gConst: 0.693147\n\n"
                              "Transition_probabilities_matrix:\n"
                              "-10000000000 1.000000 -10000000000 \n"
                              "-10000000000 0.750000 0.250000 \n"
                              "-10000000000 -10000000000 -10000000000 \n"
                              "END_OF_PHONEME_DESCRIPTION.\n");
    EXPECT_FALSE(model->WriteDatabaseText((std::string(file.Path()) + "/text").c_str()));
}

} // namespace
} // namespace tessarin
