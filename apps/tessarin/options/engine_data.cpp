#include "apps/tessarin/options/engine_data.h"

#include <filesystem>
#include <limits>

#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/console/file_io.h"
#include "apps/tessarin/options/data_folder.h"

std::string DataPathOr(const std::string& given, const data_options& options, const char* name) {
    return given.empty() ? (FindDataFolder(options.folder) / name).string() : given;
}

void RequireSize(const std::string& path, const std::string& content) {
    if (content.size() > static_cast<size_t>(std::numeric_limits<int32_t>::max())) {
        throw EngineFailure(path, tessarin::kInvalidFile);
    }
}

namespace {

tessarin::model_owner LoadModelFile(const std::string& path) {
    const std::string image = ReadWholeFile(path);
    RequireSize(path, image);
    char text[tessarin::kModelErrorTextSize] = "";
    tessarin::CAccousticHMM* model = nullptr;
    const int32_t code =
        CreateAccHMM(image.data(), static_cast<uint32_t>(image.size()), text, &model);
    if (code != tessarin::kNoError) {
        throw Failure(kExitFailed, DescribeCode(path, code) +
                                       (text[0] != '\0' ? "\n  " + std::string(text) : ""));
    }
    return tessarin::model_owner(model);
}

} // namespace

tessarin::model_owner LoadModel(const data_options& options) {
    return LoadModelFile(DataPathOr(options.model, options, kModelName));
}

tessarin::flat::model_owner LoadFlatModel(const data_options& options) {
    const std::string path = DataPathOr(options.model, options, kModelName);
    tessarin::flat::model_owner model;
    const int32_t code = tessarin_create_model_from_file(path.c_str(), tessarin::Out(model));
    if (code != TESSARIN_OK) {
        LoadModelFile(path); // says what is wrong with it
        throw EngineFailure(path, code);
    }
    return model;
}

std::string CalibrationPath(const data_options& options) {
    const std::filesystem::path path =
        std::filesystem::path(DataPathOr(options.model, options, kModelName))
            .replace_extension(".calibration");
    return std::filesystem::exists(path) ? path.string() : "";
}

std::string HearingModelPath(const data_options& options) {
    std::string path = DataPathOr(options.model, options, kHearingModelName);
    return std::filesystem::exists(path) || !options.model.empty()
               ? path
               : DataPathOr(options.model, options, kModelName);
}

tessarin::model_owner LoadHearingModel(const data_options& options) {
    return LoadModelFile(HearingModelPath(options));
}

void AddDataFolderOption(CLI::App& command, data_options* options) {
    command.add_option("--data", options->folder, "Folder with the project's own data")
        ->option_text("FOLDER");
}
