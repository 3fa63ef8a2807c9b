#include "BurnVerify.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <vector>

#include "BurnJobSteps.h"
#include "BurnProgress.h"
#include "IsoImage.h"
#include "IsoTreeReader.h"

namespace plattmix::authoring {

namespace {

constexpr int64_t kBlockBytes = 2048;
// Read at a time from an image, and compared between two looks at the window.
constexpr size_t kChunk = size_t{1} << 20;

// The check's bar and status text, with a yield and a look at Escape after each chunk.
class CheckProgress {
  public:
    CheckProgress(const BurnHooks& hooks, std::string& status, int64_t totalBytes)
        : hooks_(hooks), status_(status), total_(totalBytes) {
        Show();
    }

    // Counts compared bytes; false once Escape was pressed.
    bool Add(size_t bytes) {
        done_ += static_cast<int64_t>(bytes);
        sinceLook_ += bytes;
        if (sinceLook_ < kChunk)
            return true;
        sinceLook_ = 0;
        Show();
        YieldToWindow(hooks_.scan);
        return !EscapePressed(hooks_.scan);
    }

    // Everything compared: the full bar.
    VerifyRun Finished() {
        done_ = total_;
        Show();
        return {};
    }

  private:
    void Show() {
        WriteProgress progress;
        progress.action = kActionVerifying;
        progress.lastWrittenLba = done_ / kBlockBytes;
        progress.sectorCount = (total_ + kBlockBytes - 1) / kBlockBytes;
        ShowProgress(hooks_, status_, progress);
    }

    const BurnHooks& hooks_;
    std::string& status_;
    int64_t total_ = 0;
    int64_t done_ = 0;
    size_t sinceLook_ = 0;
};

VerifyRun Different(std::string where, std::string detail) {
    return {VerifyEnd::Different, std::move(where), std::move(detail)};
}

VerifyRun Aborted() {
    return {VerifyEnd::Aborted, {}, {}};
}

VerifyRun Unreadable(const IRecorder& recorder) {
    const std::string message = recorder.LastMessage();
    return Different("Disk nicht lesbar", message.empty()
                                              ? "Die Disk lässt sich nach dem Brennen nicht lesen."
                                              : message);
}

std::string Sector(int64_t lba) {
    return "Sektor " + std::to_string(lba);
}

// How many of the first size bytes of a and b are equal.
size_t EqualPrefix(const char* a, const char* b, size_t size) {
    if (std::memcmp(a, b, size) == 0)
        return size;
    return static_cast<size_t>(std::mismatch(a, a + size, b).first - a);
}

// The file's place on the disc: below the folder its row lies in.
std::string DiscPath(const CompilationRow& row, const std::string& file) {
    return file.substr(row.parent == "/" ? 1 : row.parent.size() + 1);
}

bool SameFile(const std::string& a, const std::string& b) {
    std::error_code error;
    return !b.empty() && std::filesystem::equivalent(a, b, error);
}

// One file of the compilation read back through the tree and held against its source.
VerifyRun CompareFile(const IsoTreeReader& back, const std::string& discPath,
                      const std::string& source, CheckProgress& progress) {
    const IsoTreeEntry* entry = back.Find(discPath);
    if (entry == nullptr || entry->kind != IsoEntryKind::File)
        return Different(source, "Die Datei fehlt auf der Disk: " + discPath);
    std::error_code error;
    const auto size = static_cast<int64_t>(std::filesystem::file_size(source, error));
    std::ifstream in(source, std::ios::binary);
    if (error || !in)
        return Different(source, "Die Quelldatei lässt sich nicht lesen: " + source);
    if (size != entry->size)
        return Different(source, "Auf der Disk " + std::to_string(entry->size) + " statt " +
                                     std::to_string(size) + " Bytes: " + discPath);
    std::vector<char> expected;
    int64_t offset = 0;
    bool differs = false;
    bool escaped = false;
    const bool read = back.ReadFile(discPath, [&](const char* data, size_t count) {
        expected.resize(count);
        in.read(expected.data(), static_cast<std::streamsize>(count));
        const size_t equal = EqualPrefix(data, expected.data(), static_cast<size_t>(in.gcount()));
        offset += static_cast<int64_t>(equal);
        if (equal != count) {
            differs = true;
            return false;
        }
        escaped = !progress.Add(count);
        return !escaped;
    });
    if (escaped)
        return Aborted();
    if (differs)
        return Different(source,
                         "Die Disk weicht ab Byte " + std::to_string(offset) + " ab: " + discPath);
    if (!read || offset != size)
        return Different(source,
                         "Lesefehler nach Byte " + std::to_string(offset) + ": " + discPath);
    return {};
}

}  // namespace

VerifyRun VerifyIsoImage(IRecorder& recorder, const std::string& isoPath, const BurnHooks& hooks,
                         std::string& status) {
    const std::string unreadable = "Die ISO-Datei lässt sich nicht lesen: " + isoPath;
    std::error_code error;
    const auto size = static_cast<int64_t>(std::filesystem::file_size(isoPath, error));
    std::ifstream image(isoPath, std::ios::binary);
    if (error || !image)
        return Different(isoPath, unreadable);
    CheckProgress progress(hooks, status, size);
    if (!recorder.ReloadMedium())
        return Unreadable(recorder);
    const int64_t start = recorder.WrittenStartLba();
    std::vector<char> expected(kChunk);
    std::vector<char> actual(kChunk);
    for (int64_t offset = 0; offset < size; offset += static_cast<int64_t>(kChunk)) {
        const auto count = static_cast<size_t>(std::min<int64_t>(size - offset, kChunk));
        if (!image.read(expected.data(), static_cast<std::streamsize>(count)))
            return Different(isoPath, unreadable);
        const int64_t lba = start + offset / kBlockBytes;
        const size_t got = recorder.ReadData(lba, actual.data(), count);
        const size_t equal = EqualPrefix(actual.data(), expected.data(), got);
        if (equal < got) {
            const int64_t sector = start + (offset + static_cast<int64_t>(equal)) / kBlockBytes;
            return Different(Sector(sector), Sector(sector) + " weicht vom Abbild ab.");
        }
        if (got < count) {
            const int64_t sector = start + (offset + static_cast<int64_t>(got)) / kBlockBytes;
            const std::string message = recorder.LastMessage();
            return Different(Sector(sector), "Lesefehler in " + Sector(sector) +
                                                 (message.empty() ? "" : ": " + message));
        }
        if (!progress.Add(count))
            return Aborted();
    }
    return progress.Finished();
}

VerifyRun VerifyCompilation(IRecorder& recorder, const CompilationListing& listing,
                            const std::string& excludedFile, const BurnHooks& hooks,
                            std::string& status) {
    CheckProgress progress(hooks, status, listing.totalBytes);
    // Every entry of the tree as it was written, the earlier sessions' ones too.
    std::vector<std::string> written;
    if (Iso_Image* tree = recorder.LoadImage()) {
        const IsoTreeReader reader(*tree);
        for (const IsoTreeEntry& entry : reader.Entries())
            written.push_back(entry.path);
    }
    if (!recorder.ReloadMedium())
        return Unreadable(recorder);
    Iso_Image* image = recorder.ReadBackImage();
    if (image == nullptr)
        return Unreadable(recorder);
    const IsoTreeReader back(*image);
    for (const std::string& path : written) {
        if (back.Find(path) == nullptr)
            return Different(path, "Nicht mehr auf der Disk: " + path);
    }
    for (const CompilationRow& row : listing.rows) {
        for (const std::string& file : row.listing.ListFiles) {
            if (SameFile(file, excludedFile))
                continue;
            VerifyRun run = CompareFile(back, DiscPath(row, file), file, progress);
            if (run.end != VerifyEnd::Equal)
                return run;
        }
    }
    return progress.Finished();
}

bool ReportVerify(const VerifyRun& run, const BurnHooks& hooks, BurnResult& result) {
    if (run.end == VerifyEnd::Equal) {
        // The status line is back where the write left it.
        WriteProgress completed;
        completed.action = kActionCompleted;
        ShowProgress(hooks, result.status, completed);
        return true;
    }
    result.detail = run.detail;
    if (run.end == VerifyEnd::Aborted) {
        result.outcome = BurnOutcome::Aborted;
        result.listStatus = kIsoAborted;
        result.detail = "Das Brennen ist abgeschlossen; das Prüfen wurde abgebrochen.";
        ShowStatus(hooks, result.status, kTextActionAborted);
        ShowMessage(hooks, kTextVerifyAborted, MessageIcon::Exclamation);
        return false;
    }
    const std::string text = kTextVerifyFailed + run.where;
    result.outcome = BurnOutcome::Failed;
    result.listStatus = kIsoFailed;
    ShowStatus(hooks, result.status, text);
    ShowMessage(hooks, text, MessageIcon::Exclamation);
    return false;
}

}  // namespace plattmix::authoring
