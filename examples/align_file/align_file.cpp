// Finds when each word of a text was spoken. usage: align_file DATA_FOLDER AUDIO TEXT
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

#include <tessarin/tessarin.h>

int main(int argc, char** argv) {
    if (argc != 4)
        return 1;
    const std::string data = argv[1];
    std::ifstream file(data + "/en-us.model", std::ios::binary);
    const std::string image{std::istreambuf_iterator<char>(file), {}};

    tessarin::CAccousticHMM* model = nullptr;
    tessarin::IVisemixTranscriber* transcriber = nullptr;
    tessarin::IObservationStream* stream = nullptr;
    tessarin::ISyncResultsCollection* results = nullptr;
    tessarin::ITextBasedPhnRecognizer* recognizer = nullptr;
    CreateSyncResultsCollection(tessarin::kPostProcessScores, &results);
    CreateTextBasedRecognizer(&recognizer);
    int32_t code = CreateAccHMM(image.data(), uint32_t(image.size()), nullptr, &model);
    if (code == 0)
        code = CreateTranscriberFromLexiconFile((data + "/en-us.lexicon").c_str(), &transcriber);
    if (code == 0)
        code = CreateObservationStreamFromAudioFile(argv[2], model, &stream);
    if (code == 0)
        code = recognizer->RecognizePhonemes(stream, model, argv[3], transcriber, nullptr, results);

    for (const tessarin::CSyncMarker* m = results->begin(); m != results->end(); ++m)
        if (m->type == tessarin::kWordMarker)
            std::printf("%6d %6d %s\n", m->start, m->end, m->text);
    if (code != 0)
        std::fprintf(stderr, "%s\n", GetVisemixErrorMessage(code));
    DestroyTextBasedRecognizer(recognizer);
    DestroySyncResultsCollection(results);
    DestroyObservationStream(stream); // before the model that it uses
    DestroyTranscriber(transcriber);
    DestroyAccHMM(model);
    return code;
}
