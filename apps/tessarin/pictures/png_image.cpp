#include "apps/tessarin/pictures/png_image.h"

#include <png.h>

#include "apps/tessarin/console/failure.h"

std::string WritePng(const Canvas& picture) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(picture.GetWidth());
    image.height = static_cast<png_uint_32>(picture.GetHeight());
    image.format = PNG_FORMAT_RGB;
    const uint8_t* const pixels = picture.GetPixels().data();
    std::string file;
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
    file.resize(size);
    if (png_image_write_to_memory(&image, file.data(), &size, 0, pixels, 0, nullptr) == 0) {
        throw Failure(kExitFailed, std::string("PNG: ") + image.message);
    }
    file.resize(size);
    return file;
}
