#include "game/SettingsFile.h"

#include "common/Files.h"
#include "common/UserFolders.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <sstream>
#include <toml++/toml.h>
#include <type_traits>

namespace drench::game {

namespace {

namespace fs = std::filesystem;

/// Files of earlier damages that are kept.
constexpr int mostDamaged = 100;

/// Renames the file to a name that is free; the new name, or nothing if that fails.
std::optional<std::string> keepAside(const std::string& file) {
    for (int number = 1; number <= mostDamaged; ++number) {
        const std::string aside =
            file + ".damaged" + (number == 1 ? "" : "-" + std::to_string(number));
        std::error_code failed;
        if (fs::symlink_status(aside, failed).type() != fs::file_type::not_found)
            continue;
        fs::rename(file, aside, failed);
        if (!failed)
            return aside;
    }
    return std::nullopt;
}

/// The document in the file, empty if there is no file. A damaged one is kept aside and told.
toml::table readDocument(const std::string& file, std::vector<std::string>& problems) {
    std::error_code failed;
    if (fs::status(file, failed).type() == fs::file_type::not_found)
        return {};
    const std::string text = readFile(file);
    try {
        return toml::parse(text, file);
    } catch (const toml::parse_error& error) {
        const std::optional<std::string> aside = keepAside(file);
        problems.push_back(file + ':' + std::to_string(error.source().begin.line) + ": " +
                           std::string(error.description()) + "; the usual settings are used" +
                           (aside ? ", and the file is kept as " + *aside : std::string()));
        return {};
    }
}

/// Reads values of a document, one by one.
class Reader {
  public:
    Reader(const toml::table& document, std::string file, std::vector<std::string>& problems)
        : document_(document), file_(std::move(file)), problems_(problems) {}

    void operator()(const char* table, const char* key, bool& value) const {
        read(table, key, value, "neither true nor false");
    }

    void operator()(const char* table, const char* key, double& value, Limits<double>) const {
        read(table, key, value, "no number");
    }

    void operator()(const char* table, const char* key, int& value, Limits<int>) const {
        read(table, key, value, "no whole number");
    }

    void operator()(const char* table, const char* key, Picture& value, const auto& names) const {
        std::string name = names[static_cast<std::size_t>(value)];
        read(table, key, name, "no text");
        const auto found = std::find(names.begin(), names.end(), name);
        if (found != names.end())
            value = static_cast<Picture>(found - names.begin());
        else
            tell(*document_[table][key].node(), key,
                 "cannot be \"" + name + "\"; the usual value is used");
    }

    void readName(std::string& name) const { read("player", "name", name, "no text"); }

    void readRooms(std::vector<std::string>& rooms) const {
        readTexts("player", "rooms",
                  [&](std::string room, const toml::node&) { rooms.push_back(std::move(room)); });
    }

    /// Actions that the file does not name keep those of their usual inputs that are free.
    void readBindings(Bindings& bindings) const {
        const Bindings usual;
        bindings = Bindings::none();
        std::vector<Action> unnamed;
        for (const Action action : actions()) {
            const auto bind = [&](const std::string& name, const toml::node& node) {
                const std::optional<Input> input = inputNamed(name);
                if (input)
                    bindings.bind(action, *input);
                else
                    tell(node, actionName(action), "has no key or button \"" + name + "\"");
            };
            if (!readTexts("keys", actionName(action), bind))
                unnamed.push_back(action);
        }
        for (const Action action : unnamed) {
            for (const Input& input : usual.inputsOf(action)) {
                if (!bindings.actionOf(input))
                    bindings.bind(action, input);
            }
        }
    }

  private:
    template<class Value>
    void read(const char* table, const char* key, Value& value, const char* otherwise) const {
        const toml::node* const node = document_[table][key].node();
        if (!node)
            return;
        const std::optional<Value> found = node->value<Value>();
        const bool isNumber = [&] {
            if constexpr (std::is_same_v<Value, double>)
                return found && !std::isnan(*found);
            else
                return found.has_value();
        }();
        if (isNumber)
            value = *found;
        else
            tell(*node, key, std::string("is ") + otherwise + "; the usual value is used");
    }

    /// Calls `take` with each text of a list; false if there is no such list.
    template<class Take>
    bool readTexts(const char* table, std::string_view key, const Take& take) const {
        const toml::node* const node = document_[table][key].node();
        if (!node)
            return false;
        const toml::array* const list = node->as_array();
        if (!list) {
            tell(*node, key, "is no list; the usual one is used");
            return false;
        }
        for (const toml::node& each : *list) {
            if (const std::optional<std::string> text = each.value<std::string>())
                take(*text, each);
            else
                tell(each, key, "has something else than texts in its list");
        }
        return true;
    }

    void tell(const toml::node& node, std::string_view key, const std::string& what) const {
        problems_.push_back(file_ + ':' + std::to_string(node.source().begin.line) + ": " +
                            std::string(key) + ' ' + what);
    }

    const toml::table& document_;
    std::string file_;
    std::vector<std::string>& problems_;
};

toml::table& tableIn(toml::table& document, std::string_view name) {
    if (toml::table* const table = document[name].as_table())
        return *table;
    return *document.insert_or_assign(name, toml::table{}).first->second.as_table();
}

toml::array listOf(const std::vector<std::string>& texts) {
    toml::array list;
    for (const std::string& text : texts)
        list.push_back(text);
    return list;
}

void store(toml::table& document, const Settings& settings) {
    visitValues(settings, [&](const char* table, const char* key, const auto& value,
                              const auto&... limitsOrNames) {
        if constexpr (std::is_same_v<decltype(value), const Picture&>)
            tableIn(document, table)
                .insert_or_assign(key, (limitsOrNames[static_cast<std::size_t>(value)], ...));
        else
            tableIn(document, table).insert_or_assign(key, value);
    });
    toml::table& player = tableIn(document, "player");
    player.insert_or_assign("name", settings.name);
    player.insert_or_assign("rooms", listOf(settings.rooms));
    for (const Action action : actions()) {
        std::vector<std::string> names;
        for (const Input& input : settings.bindings.inputsOf(action))
            names.push_back(inputName(input));
        tableIn(document, "keys").insert_or_assign(actionName(action), listOf(names));
    }
}

} // namespace

std::string settingsFile() {
    const std::string folder = userFolder("XDG_CONFIG_HOME", ".config");
    return folder.empty() ? folder : folder + "/settings.toml";
}

ReadSettings readSettings(const std::string& file) {
    ReadSettings read;
    try {
        const toml::table document = readDocument(file, read.problems);
        const Reader reader(document, file, read.problems);
        visitValues(read.settings, reader);
        reader.readName(read.settings.name);
        reader.readRooms(read.settings.rooms);
        reader.readBindings(read.settings.bindings);
    } catch (const InputError& error) {
        read.problems.emplace_back(error.what());
    }
    clamp(read.settings);
    return read;
}

void writeSettings(const std::string& file, const Settings& settings) {
    std::error_code ignored;
    fs::create_directories(fs::path(file).parent_path(), ignored);
    std::vector<std::string> untold;
    toml::table document = readDocument(file, untold);
    Settings clamped = settings;
    clamp(clamped);
    store(document, clamped);
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << "# Settings of Drench. The window writes this file whole and keeps what it does not "
            "know,\n"
            "# comments apart.\n\n"
         << document << '\n';
    replaceFile(file, text.str());
}

} // namespace drench::game
