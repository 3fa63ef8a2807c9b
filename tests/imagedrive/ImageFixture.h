// Helpers for the disc-image drive tests: a scratch folder per test, tiny image files written
// from the test itself, and command blocks sent through the transport interface.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "common/ScratchFolder.h"
#include "imagedrive/clsImageDrive.h"
#include "modMMC.h"

namespace plattmix::scsi::imagedrive::test {

namespace fs = std::filesystem;
using Bytes = std::vector<uint8_t>;

inline fs::path Scratch() {
    return plattmix::test::ScratchFolder("imagedrive");
}

inline void WriteText(const fs::path& path, std::string_view text) {
    std::ofstream(path, std::ios::binary) << text;
}

inline void WriteBytes(const fs::path& path, const Bytes& bytes) {
    WriteText(path, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

// Sectors whose bytes tell where they come from: byte i of sector s is (seed + s * 7 + i) % 251.
inline Bytes Stamped(size_t sectors, size_t sectorSize, unsigned seed) {
    Bytes bytes(sectors * sectorSize);
    for (size_t k = 0; k < bytes.size(); ++k)
        bytes[k] = static_cast<uint8_t>((seed + k / sectorSize * 7 + k % sectorSize) % 251);
    return bytes;
}

inline Bytes Slice(const Bytes& bytes, size_t from, size_t count) {
    return Bytes(bytes.begin() + static_cast<std::ptrdiff_t>(from),
                 bytes.begin() + static_cast<std::ptrdiff_t>(from + count));
}

struct Outcome {
    int32_t status = -1;
    Bytes data;               // the buffer after the command, pre-filled with 0xEE
    bool guardIntact = true;  // nothing was written past the buffer's length
};

// Sends the command block into a buffer of bufferSize bytes.
inline Outcome Send(clsImageDrive& drive, std::string handle, Bytes cdb, size_t bufferSize = 0) {
    constexpr size_t kGuard = 64;
    Bytes memory(bufferSize + kGuard, 0xEE);
    auto length = static_cast<uint8_t>(cdb.size());
    int32_t direction = 0;
    int16_t timeOut = 5;
    Outcome outcome;
    outcome.status =
        drive.ExecCMD(handle, cdb, length, direction, bufferSize == 0 ? nullptr : memory.data(),
                      static_cast<int32_t>(bufferSize), timeOut);
    outcome.guardIntact = Slice(memory, bufferSize, kGuard) == Bytes(kGuard, 0xEE);
    memory.resize(bufferSize);
    outcome.data = std::move(memory);
    return outcome;
}

// Command blocks from the program's builders (whose bytes modMMC_test checks), as Bytes.
template <size_t N>
Bytes Cdb(const std::array<uint8_t, N>& cdb) {
    return Bytes(cdb.begin(), cdb.end());
}

// READ CD; expectedType goes to byte 1's bits 2-4.
inline Bytes ReadCdCdb(uint32_t lba, uint32_t blocks, uint8_t flags, uint8_t expectedType = 0) {
    Bytes cdb = Cdb(modMMC::BuildReadCD(lba, blocks, flags));
    cdb[1] = static_cast<uint8_t>(expectedType << 2);
    return cdb;
}

inline Bytes Read10Cdb(uint32_t lba, uint16_t blocks) {
    return Cdb(modMMC::BuildRead10(lba, blocks));
}

inline Bytes TocCdb(bool msf, uint8_t format, uint8_t track, uint16_t allocation) {
    return Cdb(modMMC::BuildReadTOCFormat(msf, format, track, allocation));
}

inline const Bytes kTestUnitReady{0, 0, 0, 0, 0, 0};

// The sense of the last command as one value for readable comparisons.
inline uint32_t SenseOf(const clsImageDrive& drive) {
    return (uint32_t{drive.LastSK()} << 16) | (uint32_t{drive.LastASC()} << 8) | drive.LastASCQ();
}

inline constexpr uint32_t kInvalidField = 0x052400;
inline constexpr uint32_t kOutOfRange = 0x052100;
inline constexpr uint32_t kIllegalMode = 0x056400;

// One image drive and short ways to talk to it.
class DriveTest : public ::testing::Test {
  protected:
    std::string Add(const std::string& path) {
        auto added = drive.AddDrive(path);
        EXPECT_TRUE(added.ok()) << added.Error();
        return added.ok() ? added.Value() : std::string();
    }
    int32_t Status(const std::string& on, const Bytes& cdb) { return Send(drive, on, cdb).status; }
    // Status 2 and the sense, or the status alone.
    uint32_t Failure(const Outcome& outcome) const {
        return outcome.status == 2 ? SenseOf(drive) : static_cast<uint32_t>(outcome.status);
    }
    // The sense of a TEST UNIT READY: 0 when ready.
    uint32_t Ready(const std::string& on) { return Failure(Send(drive, on, kTestUnitReady)); }
    // READ CD on the drive of handle into a buffer of bufferSize bytes.
    Outcome ReadCd(uint32_t lba, uint32_t blocks, uint8_t flags, size_t bufferSize,
                   uint8_t expectedType = 0) {
        return Send(drive, handle, ReadCdCdb(lba, blocks, flags, expectedType), bufferSize);
    }

    clsImageDrive drive;
    std::string handle;  // the drive the test talks to
};

// Two audio tracks in one BIN (track 2 with an index 00) and a Mode 1 track from 2048-byte
// sectors behind a two-second pregap:
//   track 1 LBA 0..9, track 2 area 10, start 20, end 40, track 3 area 40, start 190, end 220.
inline constexpr size_t kAudioSectors = 40;
inline constexpr size_t kDataSectors = 30;
inline constexpr unsigned kAudioSeed = 1;
inline constexpr unsigned kDataSeed = 2;

// Sector s of the small disc's audio or data file, as the file holds it.
inline Bytes AudioSector(size_t s) {
    return Slice(Stamped(kAudioSectors, 2352, kAudioSeed), s * 2352, 2352);
}
inline Bytes DataSector(size_t s) {
    return Slice(Stamped(kDataSectors, 2048, kDataSeed), s * 2048, 2048);
}

inline std::string WriteSmallDisc(const fs::path& folder) {
    WriteBytes(folder / "audio eins.bin", Stamped(kAudioSectors, 2352, kAudioSeed));
    WriteBytes(folder / "daten.bin", Stamped(kDataSectors, 2048, kDataSeed));
    WriteText(folder / "klein.cue",
              "FILE \"audio eins.bin\" BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n"
              "TRACK 02 AUDIO\nINDEX 00 00:00:10\nINDEX 01 00:00:20\n"
              "FILE daten.bin BINARY\nTRACK 03 MODE1/2048\nPREGAP 00:02:00\nINDEX 01 00:00:00\n");
    return (folder / "klein.cue").string();
}

// An enhanced disc: 20 audio sectors in session 1, 10 Mode 2 Form 1 sectors in session 2
// (track 2 starts at 20 + 11400 = 11420, lead-out 11430). The Mode 2 file's bytes.
inline Bytes EnhancedData() {
    Bytes data = Stamped(10, 2352, 3);
    for (size_t s = 0; s < 10; ++s) {
        data[s * 2352 + 18] = 0x08;  // sub-header submode: data, Form 1
        data[s * 2352 + 22] = 0x08;
    }
    return data;
}

inline std::string WriteEnhancedDisc(const fs::path& folder) {
    WriteBytes(folder / "a.bin", Stamped(20, 2352, 4));
    WriteBytes(folder / "b.bin", EnhancedData());
    WriteText(folder / "plus.cue",
              "REM SESSION 01\nFILE a.bin BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n"
              "REM SESSION 02\nFILE b.bin BINARY\nTRACK 02 MODE2/2352\nINDEX 01 00:00:00\n");
    return (folder / "plus.cue").string();
}

}  // namespace plattmix::scsi::imagedrive::test
