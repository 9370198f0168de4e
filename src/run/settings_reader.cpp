#include "run/settings_reader.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <fstream>
#include <optional>
#include <type_traits>
#include <utility>
#include <variant>

#include "foundation/my_string.h"
#include "run/settings.h"
#include "run/settings_table.h"

namespace mnd {

namespace {

constexpr int kValueSize = 100;

// The number of a field; none for a text and for a bool, which only asks whether it is zero.
std::optional<double> number_of(const settings& s, const SettingKey& key) {
    return std::visit(
        [&s](auto field) -> std::optional<double> {
            using Value = std::decay_t<decltype(s.*field)>;
            if constexpr (std::is_same_v<Value, my_string> || std::is_same_v<Value, bool>) {
                return std::nullopt;
            } else {
                return static_cast<double>(s.*field);
            }
        },
        key.field);
}

// The number that a whole text spells, blanks around it aside.
std::optional<double> spelled_number(std::string_view text) {
    constexpr std::string_view kBlanks = " \t";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return std::nullopt;
    text = text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
    double number = 0.0;
    const char* const end = text.data() + text.size();
    const auto [stop, fault] = std::from_chars(text.data(), end, number);
    return fault == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

// Digits behind the tenth are lost in any decimal text.
bool same_number(double read, double spelled) {
    constexpr double kTolerance = 1e-9;
    return std::fabs(read - spelled) <= kTolerance * std::fabs(spelled);
}

}  // namespace

SettingsLines::SettingsLines(const char* file) {
    std::ifstream in(file, std::ios_base::binary);
    std::string line;
    while (std::getline(in, line)) {
        line.resize(std::strlen(line.c_str()));  // a zero byte ends the line, as it ends any text
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.find('=') != std::string::npos) lines_.push_back(std::move(line));
        line.clear();
    }
}

SettingsLines::Match SettingsLines::find(std::string_view key, std::size_t size) const {
    for (std::size_t i = 0; size > 0 && i < lines_.size(); ++i) {
        const std::string_view line = lines_[i];
        if (line.find(key) == std::string_view::npos) continue;
        const std::string_view kept = line.substr(0, size - 1);
        const std::size_t sign = kept.find('=');
        if (sign == std::string_view::npos || sign + 1 == kept.size()) continue;
        return {kept.substr(sign + 1), i};
    }
    return {{}, kNone};
}

int settings::GetPrivateProfileString([[maybe_unused]] const char* section, const char* key,
                                      [[maybe_unused]] const char* default_value, char* buffer,
                                      const int& size, const char* file) {
    if (size <= 0) return 0;
    const SettingsLines lines(file);
    const SettingsLines::Match match = lines.find(key, static_cast<std::size_t>(size));
    if (!match.value.empty()) std::memcpy(buffer, match.value.data(), match.value.size());
    buffer[match.value.size()] = '\0';
    return match.line == SettingsLines::kNone ? 0 : 1;
}

void settings::read_settings(const my_string& file_name) {
    const SettingsLines lines(file_name.c_str());
    const SettingKey* const haplotypes = find_setting("ComputeAllHaplotypesEM");
    SettingsLines::Match haplotypes_match = {{}, SettingsLines::kNone};

    for (const SettingKey& key : setting_keys()) {
        const SettingsLines::Match match = lines.find(key.name, kValueSize);
        const bool second_name = &key != haplotypes && key.field == haplotypes->field;
        if (&key == haplotypes) haplotypes_match = match;
        // Two keys write one field: a missing second one leaves it alone, and the later line wins.
        if (second_name &&
            (match.line == SettingsLines::kNone ||
             (haplotypes_match.line != SettingsLines::kNone && haplotypes_match.line > match.line))) {
            continue;
        }
        if (match.line != SettingsLines::kNone) {
            assign_setting_text(*this, key, std::string(match.value).c_str());
        } else if ((key.traits & kKeptWhenAbsent) == 0) {
            assign_setting_number(*this, key, 0.0);
        }
    }
    update_has_em_task();
}

std::vector<MisreadSetting> misread_settings(const settings& s, const char* file) {
    const SettingsLines lines(file);
    std::vector<MisreadSetting> misread;
    for (const SettingKey& key : setting_keys()) {
        const SettingsLines::Match match = lines.find(key.name, kValueSize);
        const std::optional<double> value = number_of(s, key);
        if (match.line == SettingsLines::kNone || !value) continue;
        const std::optional<double> spelled = spelled_number(match.value);
        const bool same = spelled && same_number(*value, *spelled);
        if (!same) misread.push_back({key.name, std::string(match.value), *value});
    }
    return misread;
}

void settings::update_has_em_task() {
    const bool none = ComputeAllAllelesEM == 0 && ComputeAllHaplotypesEM == 0 && GibbsInferGamPhase == 0;
    has_em_task = none ? 0 : 1;
}

}  // namespace mnd
