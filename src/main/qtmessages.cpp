#include "main/qtmessages.h"

#include "main/msgboxnew.h"

#include <QFileDialog>
#include <QGridLayout>
#include <QInputDialog>
#include <QLineEdit>
#include <QListView>
#include <QMessageBox>
#include <QPrintDialog>

namespace quorvel {

namespace {

constexpr auto kTitle = "QUORVEL";
constexpr int kBoxWidth = 240; // what a window manager needs to show the title

/// Boxes show a line feed as a new line and have no glyph for the carriage return before it.
QString inLines(QString text) { return text.replace(QLatin1String("\r\n"), QLatin1String("\n")); }

QMessageBox::StandardButton show(QWidget* parent, const QString& text, QMessageBox::Icon icon,
                                 QMessageBox::StandardButtons buttons,
                                 QMessageBox::StandardButton pressedByEnter = QMessageBox::NoButton)
{
    QMessageBox box(icon, kTitle, inLines(text), buttons, parent);
    box.setDefaultButton(pressedByEnter);
    box.setTextFormat(Qt::PlainText);
    box.setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* grid = qobject_cast<QGridLayout*>(box.layout());
    grid->addItem(new QSpacerItem(kBoxWidth, 0), grid->rowCount(), 0, 1, grid->columnCount());
    return static_cast<QMessageBox::StandardButton>(box.exec());
}

// While a path is typed, the dialog selects each folder and file on the way. Two of them disable "Open", and the first
// one would be taken for the answer.
void letTypedNameCount(QFileDialog& dialog)
{
    auto* name = dialog.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
    auto* list = dialog.findChild<QListView*>(QStringLiteral("listView"));
    if (!name || !list) return;
    auto* selection = list->selectionModel();
    QObject::connect(selection, &QItemSelectionModel::selectionChanged, name, [name, selection] {
        if (name->hasFocus() && selection->hasSelection()) selection->clearSelection();
    });
}

} // namespace

void QtMessages::say(QWidget* parent, const QString& text)
{
    const link::Gate::Box open(gate_);
    show(parent, text, QMessageBox::NoIcon, QMessageBox::Ok);
}

bool QtMessages::ask(QWidget* parent, const QString& text)
{
    const link::Gate::Box open(gate_);
    return show(parent, text, QMessageBox::Question, QMessageBox::Yes | QMessageBox::No) == QMessageBox::Yes;
}

bool QtMessages::askToLose(QWidget* parent, const QString& text)
{
    const link::Gate::Box open(gate_);
    return show(parent, text, QMessageBox::Warning, QMessageBox::Yes | QMessageBox::No, QMessageBox::No) ==
           QMessageBox::Yes;
}

void QtMessages::showResult(QWidget* parent, const QString& firstLine, const QString& secondLine)
{
    const link::Gate::Box open(gate_);
    msgboxnew box(parent);
    box.setFirstLine(firstLine);
    box.setSecondLine(secondLine);
    box.exec();
}

QString QtMessages::chooseFile(QWidget* parent, const FileChoice& choice)
{
    const link::Gate::Box open(gate_);
    QFileDialog dialog(parent, choice.caption, QString(), choice.filter);
    dialog.setOptions(QFileDialog::DontUseNativeDialog | QFileDialog::DontConfirmOverwrite);
    dialog.setAcceptMode(choice.toSave ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode(QFileDialog::AnyFile);
    if (!choice.proposed.isEmpty()) dialog.selectFile(choice.proposed);
    letTypedNameCount(dialog);
    return dialog.exec() == QDialog::Accepted ? dialog.selectedFiles().value(0) : QString();
}

QString QtMessages::askText(QWidget* parent, const QString& caption, const QString& label)
{
    const link::Gate::Box open(gate_);
    return QInputDialog::getText(parent, caption, label).trimmed();
}

bool QtMessages::choosePrinter(QWidget* parent, QPrinter& printer)
{
    const link::Gate::Box open(gate_);
    return QPrintDialog(&printer, parent).exec() == QDialog::Accepted;
}

} // namespace quorvel
