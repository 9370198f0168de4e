// Lines of a settings file, and the search of a key in them.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace mnd {

class settings;

// The lines that have a "=" sign, read once for all keys.
class SettingsLines {
public:
    // A file that can't be opened has no lines.
    explicit SettingsLines(const char* file);

    // A value and the place of its line; the place is kNone and the value empty when the key
    // has no value.
    struct Match {
        std::string_view value;
        std::size_t line;
    };
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

    // First line that holds the key as a substring and whose first "=" has text behind it.
    //   size  what stands behind character size - 1 of the line is cut
    Match find(std::string_view key, std::size_t size) const;

private:
    std::vector<std::string> lines_;
};

// A key whose text means another number to its reader than to anybody else: "1e-7" without a
// point, a negative number, a fraction for a whole one, or no number at all.
struct MisreadSetting {
    const char* key;
    std::string text;  // as it stands in the file
    double value;      // what the field became
};

// The numeric keys of the file that settings::read_settings took for something else, in the order
// of the table.
//   s  as the file left it
std::vector<MisreadSetting> misread_settings(const settings& s, const char* file);

}  // namespace mnd
