// Walks over the loci of a data text without copying it.
#pragma once

#include <string_view>

namespace mnd {

// Calls visit(token) for each locus of a data text: each character when sep is 0, else each
// token between separators. Empty tokens are skipped.
template <class Visit>
void for_each_locus_text(std::string_view text, char sep, Visit visit) {
    if (sep == 0) {
        for (std::size_t i = 0; i < text.size(); ++i)
            visit(text.substr(i, 1));
        return;
    }
    std::size_t begin = 0;
    while (begin < text.size()) {
        std::size_t end = text.find(sep, begin);
        if (end == std::string_view::npos) end = text.size();
        if (end > begin) visit(text.substr(begin, end - begin));
        begin = end + 1;
    }
}

// Number of loci of a data text, counted in the same way.
inline int count_locus_texts(std::string_view text, char sep) {
    int n = 0;
    for_each_locus_text(text, sep, [&n](std::string_view) { ++n; });
    return n;
}

}  // namespace mnd
