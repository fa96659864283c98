#include "FrmExport.h"

#include <QAction>
#include <QCloseEvent>
#include <QFileDialog>
#include <QHeaderView>
#include <QMenuBar>
#include <QTableView>

#include "GeometrieFenetres.h"
#include "Lib_Public.h"
#include "ModeleGrille.h"

namespace zl3::gui {

DialogueEnregistrer DialogueEnregistrerQt(QWidget* parent) {
    return [parent](const std::string& dossier, const std::string& nom, const std::string& filtre) {
        // "Fichiers xls|*.xls" → "Fichiers xls (*.xls)"
        QString f = QString::fromStdString(filtre);
        const int barre = f.indexOf('|');
        if (barre >= 0) f = f.left(barre) + " (" + f.mid(barre + 1) + ")";
        QString depart = QString::fromStdString(dossier);
        if (!depart.isEmpty() && !depart.endsWith('/')) depart += '/';
        const QString choisi = QFileDialog::getSaveFileName(
            parent, QStringLiteral("Exporter"), depart + QString::fromStdString(nom), f, nullptr,
            QFileDialog::DontConfirmOverwrite);  // the command asks its own question
        return choisi.toStdString();
    };
}

FrmExport::FrmExport(QWidget* parent) : QMainWindow(parent) {
    setObjectName("FrmExport");
    setAttribute(Qt::WA_DeleteOnClose, false);
    dialogue = DialogueEnregistrerQt(this);
    QMenu* menu = menuBar()->addMenu(QStringLiteral("&Fichier"));
    QAction* exporter = menu->addAction(QStringLiteral("&Exporter..."));
    exporter->setObjectName("Mnu01Export");
    connect(exporter, &QAction::triggered, this, [this] { Mnu01Export_Click(); });
    menu->addSeparator();
    QAction* quitter = menu->addAction(QStringLiteral("&Quitter"));
    quitter->setObjectName("Mnu01Quitter");
    connect(quitter, &QAction::triggered, this, [this] { Mnu01Quitter_Click(); });

    modele_ = new ModeleGrille(grille_, this);
    vue_ = new QTableView;
    vue_->setObjectName("GrilleExport");
    vue_->setModel(modele_);
    vue_->verticalHeader()->setDefaultSectionSize(vue_->fontMetrics().height() + 4);
    setCentralWidget(vue_);
    resize(760, 480);
}

FrmExport::~FrmExport() {
    // The view reads the grid until it goes: it goes first, the grid is a member.
    delete vue_;
}

void FrmExport::SetTexteNature(const std::string& nature) {
    nature_ = nature;
    if (const auto caption = CaptionExport(nature))
        setWindowTitle(QString::fromStdString(*caption));
}

void FrmExport::TransfertDataHistorique(const Grid& source) {
    try {
        grille_ = zl3::TransfertDataHistorique(source);
    } catch (const std::exception& e) {
        TraceErreur("FrmExport:TransfertDataHistorique", 0, e.what());
    }
    modele_->Suivre();
    vue_->resizeColumnsToContents();
}

ResultatExport FrmExport::Mnu01Export_Click() {
    return ExporteHistorique(grille_, nature_, cheminParDefaut_, apresExport_, dialogue);
}

void FrmExport::showEvent(QShowEvent* e) {
    if (!geometrieLue_) {
        geometrieLue_ = true;
        RestaurerGeometrie(*this, "FrmExport");
    }
    QMainWindow::showEvent(e);
}

void FrmExport::closeEvent(QCloseEvent* e) {
    SauverGeometrie(*this, "FrmExport");
    QMainWindow::closeEvent(e);
}

}  // namespace zl3::gui
