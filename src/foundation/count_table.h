// A rectangular table of counts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace mnd {

// Rows of 32-bit counts, in one block. Without rows or columns the table does not exist.
class CountTable {
public:
    CountTable() = default;

    // Becomes a table of zeros; what stood in it is lost. A size of 0 or less leaves no table.
    void build(int rows, int columns) {
        clear();
        if (rows <= 0 || columns <= 0) return;
        rows_ = rows;
        columns_ = columns;
        cells_.assign(static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns), 0);
    }
    // Releases the cells; may be done twice.
    void clear() {
        cells_ = {};
        rows_ = columns_ = 0;
    }

    bool exists() const { return !cells_.empty(); }
    int rows() const { return rows_; }
    int columns() const { return columns_; }

    // The cells of an existing row; no check, for inner loops.
    std::int32_t* operator[](int row) { return cells_.data() + offset(row); }
    const std::int32_t* operator[](int row) const { return cells_.data() + offset(row); }
    // All cells, row by row.
    std::vector<std::int32_t>& cells() { return cells_; }
    const std::vector<std::int32_t>& cells() const { return cells_; }

    bool operator==(const CountTable&) const = default;

private:
    std::size_t offset(int row) const {
        return static_cast<std::size_t>(row) * static_cast<std::size_t>(columns_);
    }

    int rows_ = 0;
    int columns_ = 0;
    std::vector<std::int32_t> cells_;
};

}  // namespace mnd
