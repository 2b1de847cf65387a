#include "grayscale/figurerows.h"
#include "grayscale/pixelchart.h"
#include "grayscale/pixels.h"
#include "grayscale/readingfile.h"
#include "grayscale/verdict.h"
#include "ui_pixels.h"

#include <QFileInfo>
#include <QPrinter>

/// What the window shows of the pixels, and what it makes of them.
namespace quorvel {

using namespace grayscale;
using protocol::nameOf;

QString Pixels::titleOf() const
{
    const auto& reading = now_.reading;
    if (reading.readings == 0) return tr("No pixels were read yet");
    return inWords(reading) + QStringLiteral(", ") +
           reading.at.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

void Pixels::showAll()
{
    auto shown = now_;
    if (shown.reading.readings == 0) {
        shown.reading.type = bench_.instrumentType;
        shown.reading.direction = ui_->Direction->currentText();
    }
    ui_->Chart->draw(shown.reading, reference_ ? &reference_->reading : nullptr, shown.figures);
    ui_->Chart->setTitle(titleOf());
    ui_->Verdict->setText(now_.reading.readings > 0 ? verdict(now_.figures).join(u' ') : QString());
    showFigures();
}

void Pixels::showFigures()
{
    auto& table = *ui_->Figures;
    table.clear();
    table.setColumnHidden(2, !reference_);
    if (now_.reading.readings == 0) return;
    const auto& reading = now_.reading;
    for (const auto& row :
         figureRows(now_.figures, reference_ ? &reference_->figures : nullptr, reading.type)) {
        auto* item = new QTreeWidgetItem(&table, {row.name, row.now, row.then});
        if (!row.hasPlace) continue;
        item->setData(0, Qt::UserRole,
                      pixelNearest(reading.type, row.placeMm, static_cast<int>(reading.values.size())));
    }
    for (int column = 0; column < table.columnCount(); ++column)
        table.resizeColumnToContents(column);
}

chart::About Pixels::about() const
{
    return {tr("Pixels"), inWords(now_.reading), now_.reading.at, ui_->Line->isChecked()};
}

QString Pixels::proposedName() const
{
    const auto& reading = now_.reading;
    return QStringLiteral("readout-%1-%2-%3-%4")
        .arg(QString::number(reading.address), QString::fromStdString(std::string(nameOf(reading.type))),
             reading.direction, reading.at.toString(QStringLiteral("yyyy-MM-dd-HHmmss")));
}

QString Pixels::chooseForSaving(const QString& caption, const QString& filter, const QString& ending)
{
    auto path = messages_.chooseFile(this, {caption, filter, true, proposedName() + ending});
    if (path.isEmpty()) return {};
    if (QFileInfo(path).suffix().isEmpty()) path += ending;
    return mayWrite(messages_, this, path) ? path : QString();
}

void Pixels::SavePicture_Click()
{
    QStringList filters;
    for (const auto& form : chart::forms())
        filters << tr("Picture (*.%1)").arg(form);
    const auto path =
        chooseForSaving(tr("Save Picture"), filters.join(QStringLiteral(";;")), QStringLiteral(".png"));
    if (path.isEmpty()) return;
    const auto reason = chart::save(*ui_->Chart, path, QFileInfo(path).suffix(), about());
    tell(reason.isEmpty() ? tr("Picture saved: %1").arg(path) : reason);
}

void Pixels::SavePixels_Click()
{
    const auto path =
        chooseForSaving(tr("Save Pixels"), tr("Text (*.csv);;Database (*.mdb)"), QStringLiteral(".csv"));
    if (path.isEmpty()) return;
    const auto reason = saveReading(path, now_.reading);
    tell(reason.isEmpty() ? tr("Pixels saved: %1").arg(path) : reason);
}

void Pixels::Print_Click()
{
    QPrinter printer(QPrinter::HighResolution);
    printer.setPageOrientation(QPageLayout::Landscape);
    if (!messages_.choosePrinter(this, printer)) return;
    const auto reason = chart::print(*ui_->Chart, printer, about());
    tell(reason.isEmpty() ? tr("Printed.") : reason);
}

} // namespace quorvel
