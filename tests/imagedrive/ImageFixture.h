// Helpers for the disc-image drive tests: a scratch folder per test, tiny image files written
// from the test itself, and command blocks sent through the transport interface.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "common/ScratchFolder.h"
#include "imagedrive/clsImageDrive.h"

namespace plattmix::scsi::imagedrive::test {

namespace fs = std::filesystem;

// An empty folder of its own for one test.
inline fs::path Scratch(const std::string& name) {
    return plattmix::test::FreshFolder("imagedrive", name);
}

inline void WriteText(const fs::path& path, std::string_view text) {
    std::ofstream(path, std::ios::binary) << text;
}

inline void WriteBytes(const fs::path& path, const std::vector<uint8_t>& bytes) {
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<const char*>(bytes.data()),
              static_cast<std::streamsize>(bytes.size()));
}

// Sectors whose bytes tell where they come from: byte i of sector s is (seed + s * 7 + i) % 251.
inline std::vector<uint8_t> Stamped(size_t sectors, size_t sectorSize, unsigned seed) {
    std::vector<uint8_t> bytes(sectors * sectorSize);
    for (size_t s = 0; s < sectors; ++s) {
        for (size_t i = 0; i < sectorSize; ++i) {
            bytes[s * sectorSize + i] = static_cast<uint8_t>((seed + s * 7 + i) % 251);
        }
    }
    return bytes;
}

struct Outcome {
    int32_t status = -1;
    std::vector<uint8_t> data;  // the buffer after the command, pre-filled with 0xEE
    bool guardIntact = true;    // nothing was written past the buffer's length
};

// Sends the bytes with the given cdblen (0: all of them) into a buffer of bufferSize bytes.
inline Outcome Send(clsImageDrive& drive, const std::string& handle, std::vector<uint8_t> cdb,
                    size_t bufferSize = 0, uint8_t cdblen = 0) {
    constexpr size_t kGuard = 64;
    std::vector<uint8_t> memory(bufferSize + kGuard, 0xEE);
    std::string h = handle;
    uint8_t length = cdblen != 0 ? cdblen : static_cast<uint8_t>(cdb.size());
    int32_t direction = 0;
    int16_t timeOut = 5;
    Outcome outcome;
    outcome.status =
        drive.ExecCMD(h, cdb, length, direction, bufferSize == 0 ? nullptr : memory.data(),
                      static_cast<int32_t>(bufferSize), timeOut);
    for (size_t i = bufferSize; i < memory.size(); ++i)
        outcome.guardIntact &= memory[i] == 0xEE;
    memory.resize(bufferSize);
    outcome.data = std::move(memory);
    return outcome;
}

inline std::vector<uint8_t> ReadCdCdb(uint32_t lba, uint32_t blocks, uint8_t flags,
                                      uint8_t expectedType = 0) {
    return {0xBE,
            static_cast<uint8_t>(expectedType << 2),
            static_cast<uint8_t>(lba >> 24),
            static_cast<uint8_t>(lba >> 16),
            static_cast<uint8_t>(lba >> 8),
            static_cast<uint8_t>(lba),
            static_cast<uint8_t>(blocks >> 16),
            static_cast<uint8_t>(blocks >> 8),
            static_cast<uint8_t>(blocks),
            flags};
}

inline std::vector<uint8_t> Read10Cdb(uint32_t lba, uint16_t blocks) {
    return {0x28,
            0,
            static_cast<uint8_t>(lba >> 24),
            static_cast<uint8_t>(lba >> 16),
            static_cast<uint8_t>(lba >> 8),
            static_cast<uint8_t>(lba),
            0,
            static_cast<uint8_t>(blocks >> 8),
            static_cast<uint8_t>(blocks),
            0};
}

inline std::vector<uint8_t> TocCdb(bool msf, uint8_t format, uint8_t track, uint16_t allocation) {
    return {0x43,
            static_cast<uint8_t>(msf ? 2 : 0),
            format,
            0,
            0,
            0,
            track,
            static_cast<uint8_t>(allocation >> 8),
            static_cast<uint8_t>(allocation),
            0};
}

inline const std::vector<uint8_t> kTestUnitReady{0, 0, 0, 0, 0, 0};

// The sense of the last command as one value for readable comparisons.
inline uint32_t SenseOf(const clsImageDrive& drive) {
    return (uint32_t{drive.LastSK()} << 16) | (uint32_t{drive.LastASC()} << 8) | drive.LastASCQ();
}

// Two audio tracks in one BIN (track 2 with an index 00) and a Mode 1 track from 2048-byte
// sectors behind a two-second pregap:
//   track 1 LBA 0..9, track 2 area 10, start 20, end 40, track 3 area 40, start 190, end 220.
inline constexpr size_t kAudioSectors = 40;
inline constexpr size_t kDataSectors = 30;
inline constexpr unsigned kAudioSeed = 1;
inline constexpr unsigned kDataSeed = 2;

inline std::string WriteSmallDisc(const fs::path& folder) {
    WriteBytes(folder / "audio eins.bin", Stamped(kAudioSectors, 2352, kAudioSeed));
    WriteBytes(folder / "daten.bin", Stamped(kDataSectors, 2048, kDataSeed));
    WriteText(folder / "klein.cue",
              "FILE \"audio eins.bin\" BINARY\n"
              "  TRACK 01 AUDIO\n"
              "    INDEX 01 00:00:00\n"
              "  TRACK 02 AUDIO\n"
              "    INDEX 00 00:00:10\n"
              "    INDEX 01 00:00:20\n"
              "FILE \"daten.bin\" BINARY\n"
              "  TRACK 03 MODE1/2048\n"
              "    PREGAP 00:02:00\n"
              "    INDEX 01 00:00:00\n");
    return (folder / "klein.cue").string();
}

// An enhanced disc: 20 audio sectors in session 1, 10 Mode 2 Form 1 sectors in session 2
// (track 2 starts at 20 + 11400 = 11420, lead-out 11430).
inline std::string WriteEnhancedDisc(const fs::path& folder) {
    std::vector<uint8_t> data = Stamped(10, 2352, 3);
    for (size_t s = 0; s < 10; ++s) {
        data[s * 2352 + 18] = 0x08;  // sub-header submode: data, Form 1
        data[s * 2352 + 22] = 0x08;
    }
    WriteBytes(folder / "a.bin", Stamped(20, 2352, 4));
    WriteBytes(folder / "b.bin", data);
    WriteText(folder / "plus.cue",
              "REM SESSION 01\nFILE a.bin BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n"
              "REM SESSION 02\nFILE b.bin BINARY\nTRACK 02 MODE2/2352\nINDEX 01 00:00:00\n");
    return (folder / "plus.cue").string();
}

}  // namespace plattmix::scsi::imagedrive::test
