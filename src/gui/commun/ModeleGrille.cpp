#include "ModeleGrille.h"

namespace zl3::gui {

ModeleGrille::ModeleGrille(const Grid& grille, QObject* parent)
    : QAbstractTableModel(parent),
      grille_(grille),
      lignes_(grille.MaxRows()),
      colonnes_(grille.MaxCols()),
      revision_(grille.Revision()) {}

bool ModeleGrille::Suivre() {
    if (grille_.Revision() == revision_) return false;
    revision_ = grille_.Revision();
    const int lignes = grille_.MaxRows();
    const int colonnes = grille_.MaxCols();
    if (colonnes != colonnes_) {
        // Another layout altogether (the grid was built again).
        beginResetModel();
        lignes_ = lignes;
        colonnes_ = colonnes;
        endResetModel();
        return true;
    }
    if (lignes < lignes_) {
        beginRemoveRows(QModelIndex(), lignes, lignes_ - 1);
        lignes_ = lignes;
        endRemoveRows();
    } else if (lignes > lignes_) {
        beginInsertRows(QModelIndex(), lignes_, lignes - 1);
        lignes_ = lignes;
        endInsertRows();
    }
    if (lignes_ > 0 && colonnes_ > 0)
        emit dataChanged(index(0, 0), index(lignes_ - 1, colonnes_ - 1), {Qt::DisplayRole});
    if (lignes_ > 0) emit headerDataChanged(Qt::Vertical, 0, lignes_ - 1);
    if (colonnes_ > 0) emit headerDataChanged(Qt::Horizontal, 0, colonnes_ - 1);
    return true;
}

void ModeleGrille::DefinirCouleurs(const QColor& fond, const QColor& texte) {
    if (fond == fond_ && texte == texte_) return;
    fond_ = fond;
    texte_ = texte;
    if (lignes_ > 0 && colonnes_ > 0)
        emit dataChanged(index(0, 0), index(lignes_ - 1, colonnes_ - 1),
                         {Qt::BackgroundRole, Qt::ForegroundRole});
}

int ModeleGrille::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : lignes_;
}

int ModeleGrille::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : colonnes_;
}

QVariant ModeleGrille::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= lignes_ || index.column() >= colonnes_) return {};
    const int col = index.column() + 1;
    switch (role) {
        case Qt::DisplayRole:
            return QString::fromStdString(grille_.Text(col, index.row() + 1));
        case Qt::TextAlignmentRole:
            if (grille_.Genre(col) != GenreColonne::Texte)
                return QVariant::fromValue(Qt::Alignment(Qt::AlignRight | Qt::AlignVCenter));
            return QVariant::fromValue(Qt::Alignment(Qt::AlignLeft | Qt::AlignVCenter));
        case Qt::BackgroundRole:
            return fond_.isValid() ? QVariant(fond_) : QVariant();
        case Qt::ForegroundRole:
            return texte_.isValid() ? QVariant(texte_) : QVariant();
        default:
            return {};
    }
}

QVariant ModeleGrille::headerData(int section, Qt::Orientation orientation, int role) const {
    if (role != Qt::DisplayRole || section < 0) return {};
    if (orientation == Qt::Horizontal) {
        if (section >= colonnes_) return {};
        return QString::fromStdString(grille_.Text(section + 1, 0));
    }
    if (section >= lignes_) return {};
    QString texte;
    for (int niveau = 0; niveau < grille_.HeaderCols(); ++niveau) {
        const std::string& t = grille_.RowHeader(niveau, section + 1);
        if (t.empty()) continue;
        if (!texte.isEmpty()) texte += QStringLiteral("  ");
        texte += QString::fromStdString(t);
    }
    return texte;
}

}  // namespace zl3::gui
