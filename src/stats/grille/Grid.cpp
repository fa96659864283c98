#include "Grid.h"

#include <algorithm>
#include <cstdlib>

namespace zl3 {
namespace {

const std::string& Vide() {
    static const std::string vide;
    return vide;
}

// Revisions are drawn from one counter for every grid, so that a grid replaced by another one
// (a copy, a new grid assigned over it) never shows a revision its viewer has already seen.
uint64_t ProchaineRevision() {
    static uint64_t compteur = 0;
    return ++compteur;
}

}  // namespace

void Grid::Touche() {
    revision_ = ProchaineRevision();
}

void Grid::Resize(int cols, int rows) {
    cols = std::max(cols, 0);
    rows = std::max(rows, 0);
    cells_.resize(rows);
    for (auto& r : cells_)
        r.resize(cols);
    for (auto& h : colHeaders_)
        h.resize(cols + 1);
    for (auto& h : rowHeaders_)
        h.resize(rows);
    widths_.resize(cols + 1);
    genres_.resize(cols + 1, GenreColonne::Texte);
    cols_ = cols;
    rows_ = rows;
    Touche();
}

void Grid::SetHeaderRows(int levels) {
    levels = std::max(levels, 1);
    // New levels are added at the top; the level nearest the data keeps its texts.
    while (headerRows_ < levels) {
        colHeaders_.insert(colHeaders_.begin(), std::vector<std::string>(cols_ + 1));
        ++headerRows_;
    }
    while (headerRows_ > levels) {
        colHeaders_.erase(colHeaders_.begin());
        --headerRows_;
    }
    Touche();
}

void Grid::SetHeaderCols(int levels) {
    levels = std::max(levels, 1);
    rowHeaders_.resize(levels, std::vector<std::string>(rows_));
    headerCols_ = levels;
    Touche();
}

const std::string& Grid::Text(int col, int row) const {
    if (col < 0 || row < 0 || col > cols_ || row > rows_) return Vide();
    if (row == 0) return colHeaders_[headerRows_ - 1][col];
    if (col == 0) return rowHeaders_[0][row - 1];
    return cells_[row - 1][col - 1];
}

void Grid::SetText(int col, int row, const std::string& text) {
    if (col < 0 || row < 0 || col > cols_ || row > rows_) return;
    if (row == 0)
        colHeaders_[headerRows_ - 1][col] = text;
    else if (col == 0)
        rowHeaders_[0][row - 1] = text;
    else
        cells_[row - 1][col - 1] = text;
    Touche();
}

const std::string& Grid::ColHeader(int level, int col) const {
    if (level < 0 || level >= headerRows_ || col < 0 || col > cols_) return Vide();
    return colHeaders_[level][col];
}

void Grid::SetColHeader(int level, int col, const std::string& text) {
    if (level < 0 || level >= headerRows_ || col < 0 || col > cols_) return;
    colHeaders_[level][col] = text;
    Touche();
}

const std::string& Grid::RowHeader(int level, int row) const {
    if (level < 0 || level >= headerCols_ || row < 1 || row > rows_) return Vide();
    return rowHeaders_[level][row - 1];
}

void Grid::SetRowHeader(int level, int row, const std::string& text) {
    if (level < 0 || level >= headerCols_ || row < 1 || row > rows_) return;
    rowHeaders_[level][row - 1] = text;
    Touche();
}

long long Grid::Number(int col, int row) const {
    const std::string& t = Text(col, row);
    if (t.empty()) return 0;
    char* end = nullptr;
    const long long v = std::strtoll(t.c_str(), &end, 10);
    return end == t.c_str() ? 0 : v;
}

void Grid::Increment(int col, int row, long long by) {
    SetText(col, row, std::to_string(Number(col, row) + by));
}

void Grid::InsertRows(int at, int count) {
    if (count <= 0) return;
    at = std::clamp(at, 1, rows_ + 1);
    cells_.insert(cells_.begin() + (at - 1), count, std::vector<std::string>(cols_));
    for (auto& h : rowHeaders_)
        h.insert(h.begin() + (at - 1), count, std::string());
    rows_ += count;
    Touche();
}

void Grid::DeleteRows(int at, int count) {
    if (count <= 0 || at < 1 || at > rows_) return;
    count = std::min(count, rows_ - at + 1);
    cells_.erase(cells_.begin() + (at - 1), cells_.begin() + (at - 1 + count));
    for (auto& h : rowHeaders_)
        h.erase(h.begin() + (at - 1), h.begin() + (at - 1 + count));
    rows_ -= count;
    Touche();
}

void Grid::InsertCols(int at, int count) {
    if (count <= 0) return;
    at = std::clamp(at, 1, cols_ + 1);
    for (auto& r : cells_)
        r.insert(r.begin() + (at - 1), count, std::string());
    for (auto& h : colHeaders_)
        h.insert(h.begin() + at, count, std::string());
    for (auto& s : spans_)
        if (s.firstCol >= at) s.firstCol += count;
    widths_.insert(widths_.begin() + at, count, 0);
    genres_.insert(genres_.begin() + at, count, GenreColonne::Texte);
    cols_ += count;
    Touche();
}

void Grid::DeleteCols(int at, int count) {
    if (count <= 0 || at < 1 || at > cols_) return;
    count = std::min(count, cols_ - at + 1);
    for (auto& r : cells_)
        r.erase(r.begin() + (at - 1), r.begin() + (at - 1 + count));
    for (auto& h : colHeaders_)
        h.erase(h.begin() + at, h.begin() + at + count);
    for (auto& s : spans_)
        if (s.firstCol >= at + count) s.firstCol -= count;
    widths_.erase(widths_.begin() + at, widths_.begin() + at + count);
    genres_.erase(genres_.begin() + at, genres_.begin() + at + count);
    cols_ -= count;
    Touche();
}

int Grid::ColWidth(int col) const {
    if (col < 0 || col > cols_) return 0;
    return widths_[col];
}

void Grid::SetColWidth(int col, int width) {
    if (col < 0 || col > cols_) return;
    widths_[col] = width < 0 ? 0 : width;
    Touche();
}

GenreColonne Grid::Genre(int col) const {
    if (col < 1 || col > cols_) return GenreColonne::Texte;
    return genres_[col];
}

void Grid::SetGenre(int col, GenreColonne genre) {
    if (col < 1 || col > cols_) return;
    genres_[col] = genre;
    Touche();
}

void Grid::ClearData() {
    for (auto& r : cells_)
        for (auto& c : r)
            c.clear();
    for (auto& h : rowHeaders_)
        for (auto& c : h)
            c.clear();
    warning_.clear();
    Touche();
}

bool Grid::operator==(const Grid& o) const {
    if (cols_ != o.cols_ || rows_ != o.rows_ || headerRows_ != o.headerRows_ ||
        headerCols_ != o.headerCols_ || cells_ != o.cells_ || colHeaders_ != o.colHeaders_ ||
        rowHeaders_ != o.rowHeaders_ || widths_ != o.widths_ || genres_ != o.genres_ ||
        warning_ != o.warning_ || spans_.size() != o.spans_.size())
        return false;
    for (size_t i = 0; i < spans_.size(); ++i)
        if (spans_[i].level != o.spans_[i].level || spans_[i].firstCol != o.spans_[i].firstCol ||
            spans_[i].count != o.spans_[i].count)
            return false;
    return true;
}

}  // namespace zl3
