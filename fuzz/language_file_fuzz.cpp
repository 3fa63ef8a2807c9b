// A language file (UTF-16LE with its mark, as the program reads it, or anything else a damaged
// file holds): texts looked up by their German key, the language name from the suite's options
// file, and the whole file read by the UTF-16 reader.
//
// Input parts: the file's bytes, then the key looked up.
#include <cstdint>
#include <string>

#include "FuzzInput.h"
#include "modLanguage.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace plattmix;
    fuzz::Parts parts(data, size);
    const auto file = parts.Next();
    const std::string key(fuzz::AsText(parts.Next()));

    const std::string path = fuzz::ScratchFile("input.lng", fuzz::AsText(file));
    const shell::LanguageTexts texts(fuzz::ScratchFolder(), "input");
    texts.LangText(key);
    texts.LangText("Starten");
    texts.LangText("    CD Brennen  ");
    shell::ReadLanguageName(path);
    shell::UnicodeFile_Read(path);
    return 0;
}
