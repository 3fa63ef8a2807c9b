// Qt's own texts (the buttons of the message boxes, the file dialogs) in the interface's
// language, from the translations that come with Qt.
#pragma once

#include <string>

namespace plattmix::window {

// Installs Qt's translation for the interface language on the application, replacing the one
// installed before. The language is the language setting: "default" and "" mean the program's
// own German, a language file's name is read as the language's name in English or in itself
// ("English", "Deutsch"). English, a name that names no language and a language Qt has no
// translation for keep Qt's English texts.
void InstallQtTranslation(const std::string& languageName);

}  // namespace plattmix::window
