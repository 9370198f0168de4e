#include "run/settings_reader.h"

#include <cstring>
#include <fstream>
#include <utility>

#include "foundation/my_string.h"
#include "run/settings.h"
#include "run/settings_table.h"

namespace mnd {

namespace {

constexpr int kValueSize = 100;

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

void settings::update_has_em_task() {
    const bool none = ComputeAllAllelesEM == 0 && ComputeAllHaplotypesEM == 0 && GibbsInferGamPhase == 0;
    has_em_task = none ? 0 : 1;
}

}  // namespace mnd
