// The result of loading or parsing an image: a value, or one message for the user that names
// the file and, where there is one, the line ("demo.cue, Zeile 7: ...").
#pragma once

#include <optional>
#include <string>
#include <utility>

namespace plattmix::scsi::imagedrive {

template <typename T>
class ImageResult {
  public:
    static ImageResult Ok(T value) {
        ImageResult result;
        result.value_ = std::move(value);
        return result;
    }
    static ImageResult Fail(std::string message) {
        ImageResult result;
        result.error_ = std::move(message);
        return result;
    }
    // Carries another result's error over to this type.
    template <typename U>
    static ImageResult FailFrom(const ImageResult<U>& other) {
        return Fail(other.Error());
    }

    bool ok() const { return value_.has_value(); }
    const T& Value() const& { return *value_; }
    T& Value() & { return *value_; }
    T&& Take() && { return std::move(*value_); }
    const std::string& Error() const { return error_; }

  private:
    ImageResult() = default;
    std::optional<T> value_;
    std::string error_;
};

// "name, Zeile n: text", or "name: text" when no line is meant (line 0).
std::string ImageMessage(const std::string& fileName, int line, const std::string& text);

}  // namespace plattmix::scsi::imagedrive
