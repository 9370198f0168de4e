// Publications of the methods, as the result document cites them.
#pragma once

#include <ostream>
#include <string_view>
#include <vector>

namespace mnd {

// One publication. The name of an enumerator is the key of its row in the table.
enum class Citation {
    Beaumont_Nichols_1996,
    Broyden_1965,
    Ceppellini_1955,
    Chakraborty_1990,
    Chakraborty_Weiss_1991,
    Cockerham_1969,
    Cockerham_1973,
    Dempster_1977,
    Efron_Tibshirani_1993,
    Ewens_1972,
    Excoffier_1992,
    Excoffier_2003,
    Excoffier_2004,
    Excoffier_2009,
    Excoffier_Slatkin_1995,
    Excoffier_Smouse_1994,
    Fu_1997,
    Gaggiotti_Excoffier_2000,
    Garza_Williamson_2001,
    Goldstein_1995,
    Goudet_1996,
    Guo_Thompson_1992,
    Harpending_1994,
    Hill_Robertson_1968,
    Hudson_1990,
    Jin_Nei_1990,
    Jukes_Cantor_1969,
    Kimura_1980,
    Kimura_Crow_1964,
    Levene_1949,
    Lewontin_1964,
    Lewontin_Kojima_1960,
    Li_1977,
    Long_1986,
    Mantel_1967,
    Michalakis_Excoffier_1996,
    Nei_1987,
    Nei_Li_1979,
    Nei_Tajima_1981,
    Ohta_Kimura_1973,
    Paetkau_1995,
    Paetkau_1997,
    Prim_1957,
    Ray_2003,
    Raymond_Rousset_1995,
    Reynolds_1983,
    Rogers_1995,
    Rogers_Harpending_1992,
    Rohlf_1973,
    Schneider_Excoffier_1999,
    Slatkin_1991,
    Slatkin_1993,
    Slatkin_1994,
    Slatkin_1995,
    Slatkin_1996,
    Slatkin_Excoffier_1996,
    Slatkin_Hudson_1991,
    Smouse_1986,
    Stewart_1977,
    Strobeck_1987,
    Tajima_1983,
    Tajima_1989,
    Tajima_1993,
    Tajima_Nei_1984,
    Tamura_1992,
    Tamura_Nei_1993,
    Waser_Strobeck_1998,
    Watterson_1975,
    Watterson_1978,
    Weir_1996,
    Weir_Cockerham_1984,
    Wright_1951,
    Zouros_1979,
};

// Number of publications in the table.
inline constexpr int kCitationCount = 73;

// The key of a publication, such as "Tajima_1989".
std::string_view citation_key(Citation citation);

// Prints one citation; the object is used only for that.
class References {
public:
    // A citation that stands alone: "Reference: " and the text, in its own element under XML
    // output. An unknown key prints an empty text.
    References(std::ostream& out, std::string_view key);
    References(std::ostream& out, Citation citation);

    // One of several citations in a list, under a line of the caller's.
    //   mode   under XML output: kFirst closes the running text element, kLast opens it again,
    //          any other value but kMiddle writes nothing. Without effect in HTML.
    References(std::ostream& out, std::string_view key, int mode);
    References(std::ostream& out, Citation citation, int mode);

    static constexpr int kFirst = 0;
    static constexpr int kMiddle = 1;
    static constexpr int kLast = 2;

    // Text of a citation by the exact key; empty when the table does not hold it.
    static std::string_view get_reference(std::string_view key);
};

// The publications of one analysis: a single one stands alone, several are a list under the line
// "References:".
void cite(std::ostream& out, const std::vector<Citation>& publications);

}  // namespace mnd
