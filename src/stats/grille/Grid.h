// The result grid: a spreadsheet-like table of texts addressed by 1-based column and row, with
// header rows above the columns and header columns before the rows.
//
// Addressing follows the suite's grid control: Text(col, 0) is the column header nearest to the
// data (the last header level), Text(0, row) is the first row-header column, and Text(0, 0) the
// corner. Deeper header levels are reached with ColHeader(level, col) — level 0 is the top — and
// RowHeader(level, row). Counts are kept as cell texts and read back as numbers when incremented.
//
// Every change to the grid (a cell, a header, its size, a width, a span, a column kind) bumps its
// revision, so that a view on screen can tell cheaply whether it has anything to repaint.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace zl3 {

struct HeaderSpan {
    int level;     // header row level, 0 = top
    int firstCol;  // 1-based
    int count;     // columns covered
};

// What a column holds, for the displays and writers that align or type its cells: free text,
// counts (integers) or percentages (the "####0.0 %" texts of the Quotas report).
enum class GenreColonne : uint8_t { Texte, Nombre, Pourcentage };

class Grid {
  public:
    Grid() = default;
    Grid(int cols, int rows) { Resize(cols, rows); }

    int MaxCols() const { return cols_; }
    int MaxRows() const { return rows_; }
    void SetMaxCols(int cols) { Resize(cols, rows_); }
    void SetMaxRows(int rows) { Resize(cols_, rows); }
    void Resize(int cols, int rows);

    // Number of column-header rows (at least 1) and row-header columns (at least 1).
    int HeaderRows() const { return headerRows_; }
    int HeaderCols() const { return headerCols_; }
    void SetHeaderRows(int levels);
    void SetHeaderCols(int levels);

    // Cell text; col 0 / row 0 address the headers as described above. Out of range: empty text
    // on read, ignored on write.
    const std::string& Text(int col, int row) const;
    void SetText(int col, int row, const std::string& text);

    // Column header at `level` (0 = top … HeaderRows()-1 = nearest the data), col 0 = corner.
    const std::string& ColHeader(int level, int col) const;
    void SetColHeader(int level, int col, const std::string& text);
    // Row header in row-header column `level` (0 = first), for row 1..MaxRows().
    const std::string& RowHeader(int level, int row) const;
    void SetRowHeader(int level, int row, const std::string& text);

    // Column width in characters (0 = the display's default); col 0 = the row-header column.
    int ColWidth(int col) const;
    void SetColWidth(int col, int width);

    // What data column `col` holds (1-based; Texte outside the grid and for new columns).
    GenreColonne Genre(int col) const;
    void SetGenre(int col, GenreColonne genre);

    // Header cells merged across columns (the band and "Nombre"/"Pourcentage" headers).
    const std::vector<HeaderSpan>& Spans() const { return spans_; }
    void AddSpan(int level, int firstCol, int count) {
        spans_.push_back({level, firstCol, count});
        Touche();
    }

    // Changes with every change of the grid: a viewer that saw revision R and finds R again has
    // nothing to repaint. Revisions are unique across all grids, so a grid assigned over another
    // one shows a new revision too.
    uint64_t Revision() const { return revision_; }

    // Numeric value of a cell: its text read as a number, 0 when empty or not a number.
    long long Number(int col, int row) const;
    // Adds `by` to the cell read as a number and writes the sum back as text.
    void Increment(int col, int row, long long by = 1);

    // Inserts `count` empty rows before row `at` (1-based; MaxRows()+1 appends).
    void InsertRows(int at, int count = 1);
    void DeleteRows(int at, int count = 1);
    // Inserts / deletes data columns; header texts of the moved columns move with them.
    void InsertCols(int at, int count = 1);
    void DeleteCols(int at, int count = 1);

    // Empties every data cell and row header, keeping the column headers (a new search); the
    // warning goes with them.
    void ClearData();

    // Warning about the data the grid holds, empty when there is none: set when the search
    // that filled it met read errors ("Rapport incomplet: ..."), for a window's status line.
    const std::string& Warning() const { return warning_; }
    void SetWarning(std::string warning) {
        warning_ = std::move(warning);
        Touche();
    }

    // Every text of the grid (and its layout), for comparing a grid before and after an
    // operation. The revision is not compared.
    bool operator==(const Grid& other) const;

  private:
    void Touche();

    int cols_ = 0;
    int rows_ = 0;
    int headerRows_ = 1;
    int headerCols_ = 1;
    // cells_[row-1][col-1]
    std::vector<std::vector<std::string>> cells_;
    // colHeaders_[level][col] with col 0 = corner
    std::vector<std::vector<std::string>> colHeaders_{std::vector<std::string>(1)};
    // rowHeaders_[level][row-1]
    std::vector<std::vector<std::string>> rowHeaders_{std::vector<std::string>()};
    std::vector<HeaderSpan> spans_;
    std::vector<int> widths_ = std::vector<int>(1);  // widths_[col], col 0 = row headers
    std::vector<GenreColonne> genres_ = std::vector<GenreColonne>(1);  // genres_[col], col 0 unused
    std::string warning_;
    uint64_t revision_ = 0;
};

}  // namespace zl3
