#include "CliArgs.h"

#include <algorithm>

namespace plattmix::cli {

namespace {
bool Contains(const std::vector<std::string>& list, const std::string& word) {
    return std::find(list.begin(), list.end(), word) != list.end();
}
}  // namespace

ParseResult ParseCliArgs(const std::vector<std::string>& argv,
                         const std::vector<std::string>& valueOptions,
                         const std::vector<std::string>& flagOptions) {
    if (argv.empty())
        return {std::nullopt, "Kein Befehl angegeben."};
    CliArgs args;
    args.command = argv[0];
    for (size_t i = 1; i < argv.size(); ++i) {
        const std::string& word = argv[i];
        if (!word.starts_with("--")) {
            args.positional.push_back(word);
            continue;
        }
        const auto equals = word.find('=');
        const std::string name = word.substr(0, equals);
        if (Contains(flagOptions, name) && equals == std::string::npos) {
            args.options[name] = "";
        } else if (Contains(valueOptions, name)) {
            if (equals != std::string::npos) {
                args.options[name] = word.substr(equals + 1);
            } else if (i + 1 < argv.size()) {
                args.options[name] = argv[++i];
            } else {
                return {std::nullopt, "Option " + name + " braucht einen Wert."};
            }
        } else {
            return {std::nullopt, "Unbekannte Option: " + word};
        }
    }
    return {args, ""};
}

}  // namespace plattmix::cli
