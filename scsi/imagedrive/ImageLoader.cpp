#include "imagedrive/ImageLoader.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <limits>
#include <sstream>
#include <system_error>
#include <vector>

namespace plattmix::scsi::imagedrive {

namespace fs = std::filesystem;

namespace {

constexpr std::uintmax_t kMaxSheetBytes = 1024 * 1024;  // far more than any real sheet
constexpr int32_t kIsoSectorSize = 2048;

std::string LowerExtension(const fs::path& path) {
    std::string extension = path.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension;
}

// Size of a regular file, or -1 when it is missing or not a regular file.
int64_t RegularFileSize(const std::string& path) {
    std::error_code ec;
    if (!fs::is_regular_file(path, ec))
        return -1;
    const std::uintmax_t size = fs::file_size(path, ec);
    if (ec || size > static_cast<std::uintmax_t>(std::numeric_limits<int64_t>::max()))
        return -1;
    return static_cast<int64_t>(size);
}

ImageResult<DiscImage> LoadSheet(const fs::path& path) {
    using Result = ImageResult<DiscImage>;
    const std::string name = path.filename().string();
    const auto text = ReadTextFile(path.string(), kMaxSheetBytes, "zu groß für ein CUE-Sheet");
    if (!text.ok())
        return Result::FailFrom(text);

    auto sheet = ParseCueSheet(text.Value(), path.parent_path().string(), name);
    if (!sheet.ok())
        return Result::FailFrom(sheet);
    std::vector<int64_t> sizes;
    for (const CueFile& file : sheet.Value().files) {
        const int64_t fileSize = RegularFileSize(file.path);
        if (fileSize < 0) {
            return Result::Fail(
                ImageMessage(name, file.line, "Datei '" + file.name + "' nicht gefunden"));
        }
        sizes.push_back(fileSize);
    }
    return LayoutDisc(sheet.Value(), sizes, name);
}

ImageResult<DiscImage> LoadIso(const fs::path& path) {
    using Result = ImageResult<DiscImage>;
    const std::string name = path.filename().string();
    const int64_t size = RegularFileSize(path.string());
    if (size < 0)
        return Result::Fail(ImageMessage(name, 0, "Datei nicht gefunden"));
    if (size == 0 || size % kIsoSectorSize != 0) {
        return Result::Fail(ImageMessage(name, 0, "Größe ist kein Vielfaches von 2048 Bytes"));
    }
    const int64_t sectors = size / kIsoSectorSize;
    if (sectors > std::numeric_limits<int32_t>::max() / 2) {
        return Result::Fail(ImageMessage(name, 0, "zu groß für eine CD"));
    }
    return Result::Ok(IsoDisc(path.string(), static_cast<int32_t>(sectors)));
}

}  // namespace

ImageResult<std::string> ReadTextFile(const std::string& path, std::uintmax_t maxBytes,
                                      const std::string& tooLarge) {
    using Result = ImageResult<std::string>;
    const std::string name = fs::path(path).filename().string();
    const int64_t size = RegularFileSize(path);
    if (size < 0)
        return Result::Fail(ImageMessage(name, 0, "Datei nicht gefunden"));
    if (static_cast<std::uintmax_t>(size) > maxBytes)
        return Result::Fail(ImageMessage(name, 0, tooLarge));
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    if (!in)
        return Result::Fail(ImageMessage(name, 0, "Datei nicht lesbar"));
    return Result::Ok(text.str());
}

ImageResult<DiscImage> LoadImage(const std::string& path) {
    const fs::path file(path);
    const std::string extension = LowerExtension(file);
    if (extension == ".cue")
        return LoadSheet(file);
    if (extension == ".iso")
        return LoadIso(file);
    return ImageResult<DiscImage>::Fail(ImageMessage(
        file.filename().string(), 0, "unbekanntes Abbildformat (erwartet .cue oder .iso)"));
}

}  // namespace plattmix::scsi::imagedrive
