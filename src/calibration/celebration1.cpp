#include "calibration/celebration1.h"

#include "calibration/database.h"
#include "calibration/download.h"
#include "calibration/fit.h"
#include "calibration/measurement.h"
#include "files/name.h"
#include "files/replace.h"
#include "link/address.h"
#include "link/bytes.h"
#include "ui_celebration1.h"

#include <QFileInfo>

namespace quorvel::calibration {

namespace {

constexpr auto kEnding = ".mdb";

std::filesystem::path pathOf(const QString& name) { return QFileInfo(name).filesystemFilePath(); }

} // namespace

Celebration1::Celebration1(link::Bench& bench, link::Module1& module1, link::Gate& gate, Messages& messages,
                           QWidget* parent)
    : QDialog(parent), ui_(std::make_unique<Ui::Celebration1>()), bench_(bench), module1_(module1),
      gate_(gate), messages_(messages), model_(Data1)
{
    ui_->setupUi(this);
    setWindowFlag(Qt::WindowMaximizeButtonHint);
    auto keepsPlace = ui_->Progress->sizePolicy();
    keepsPlace.setRetainSizeWhenHidden(true);
    ui_->Progress->setSizePolicy(keepsPlace);
    ui_->Progress->hide();
    ui_->DBGrid1->setModel(&model_);
    ui_->DBGrid1->showRows(kPoints);
    gate_.guard(ui_->DBGrid1, &DBGrid::ButtonClick, this, &Celebration1::DBGrid1_ButtonClick);
    gate_.guard(ui_->Command1, &QPushButton::clicked, this, &Celebration1::Command1_Click);
    gate_.guard(ui_->Command2, &QPushButton::clicked, this, &Celebration1::Command2_Click);
    gate_.guard(ui_->Command3, &QPushButton::clicked, this, &Celebration1::Command3_Click);
    gate_.guard(ui_->Command4, &QPushButton::clicked, this, &Celebration1::Command4_Click);
    connect(&model_, &CalibrationModel::told, this, [this](const QString& words) { tell(words); });
    // A line that no longer belongs to the points would mislead.
    connect(&model_, &CalibrationModel::dataChanged, ui_->FitChart, &FitChart::clear);
    connect(&model_, &CalibrationModel::dataChanged, this, [this] { tell(QString()); });
    connect(&module1_.port(), &link::MSComm::lost, this, [this](const QString& reason) { tell(reason); });
    Form_Load();
}

Celebration1::~Celebration1() { commitTyped(); }

void Celebration1::tell(const QString& words) { ui_->Status->setText(words.isEmpty() ? standing() : words); }

void Celebration1::tell(const std::string& words) { tell(QString::fromStdString(words)); }

void Celebration1::tellNoColumn(const Reading& reading)
{
    tell("The file has no column " + std::string(reading.column) + ". Load another file.");
}

/// What is to be known of the file while there is nothing else to tell.
QString Celebration1::standing() const
{
    if (!unreadableBecause_.empty()) return QString::fromStdString(unreadableBecause_);
    if (!Data1.readOnlyBecause().empty()) {
        return tr("The points can be looked at, not changed: %1")
            .arg(QString::fromStdString(Data1.readOnlyBecause()));
    }
    if (Data1.olderKeptAs().empty()) return {};
    return tr("The file was written anew, because its older format can only be read. The older file is kept "
              "as %1.")
        .arg(QString::fromStdString(files::inWords(Data1.olderKeptAs())));
}

std::string Celebration1::addressDigits() const
{
    return link::AddressToHex(link::bytes(ui_->Text1->text()));
}

void Celebration1::Form_Load()
{
    ui_->Text1->setText(bench_.currentAddress);
    direction_ = directionOf(bench_.CalibrationDirection);
    if (!direction_) return;
    setWindowTitle(QString::fromUtf8(direction_->caption));
    CalibrationDatabasePath = bench_.programFolder / direction_->file;
    ui_->GridCaption->setText(direction_->gridCaption);
    ui_->DBGrid1->setAccessibleName(direction_->gridCaption);
    ui_->Label2->setText(QString::fromUtf8(direction_->hint));
    const auto created = files::isThere(CalibrationDatabasePath)
                             ? jet::Status()
                             : CreateCalibrationDatabase(CalibrationDatabasePath);
    Data1.setDatabaseName(CalibrationDatabasePath);
    bind();
    if (!created && !unreadableBecause_.empty()) {
        unreadableBecause_ = created.error();
        tell(QString());
    }
    ui_->DBGrid1->setCellButton(kReadingColumn, tr("Measure"));
    ui_->DBGrid1->setFocus();
}

bool Celebration1::bind()
{
    const auto opened = Data1.Refresh();
    unreadableBecause_ = opened ? "" : opened.error();
    if (!opened) ui_->FitChart->clear();
    model_.reset();
    if (!ui_->DBGrid1->currentIndex().isValid()) {
        ui_->DBGrid1->setCurrentIndex(model_.index(0, kDialColumn));
    }
    tell(QString());
    return opened && Data1.readOnlyBecause().empty();
}

/// @return false when something is not in the file; the status line says what.
bool Celebration1::commitTyped()
{
    model_.submit();
    const bool taken = ui_->DBGrid1->commitTyped();
    return taken && !model_.hasUnwritten();
}

bool Celebration1::mayGoOn()
{
    if (commitTyped()) return true;
    return messages_.ask(
        this,
        tr("What was typed last is not in the file. Go on and lose it?\n\n%1").arg(ui_->Status->text()));
}

void Celebration1::reject()
{
    gate_.whenIdle(this, [this] {
        if (mayGoOn()) QDialog::reject();
    });
}

void Celebration1::DBGrid1_ButtonClick()
{
    commitTyped();
    if (!direction_) return;
    if (!module1_.port().PortOpen()) {
        tell(tr("Nothing was measured: the port is closed. Open it in the main window."));
        return;
    }
    tell(tr("Measuring ..."));
    const QPersistentModelIndex cell = ui_->DBGrid1->currentIndex();
    const auto reply = measure(module1_, *direction_, addressDigits());
    if (isMeasurement(reply)) {
        tell(QString());
        takeMeasurement(cell, reply);
    } else if (module1_.port().PortOpen()) {
        tell(tr("Nothing was measured: %1. Check the address and press again.")
                 .arg(QString::fromStdString(whyNoMeasurement(reply))));
    }
}

void Celebration1::takeMeasurement(const QModelIndex& first, const std::string& reply)
{
    auto cell = first;
    for (const auto& reading : direction_->readings) {
        if (!cell.isValid()) {
            tellNoColumn(reading);
            return;
        }
        ui_->DBGrid1->setCurrentIndex(cell);
        if (!model_.setData(cell, link::shown(reading.measured(reply)))) return;
        cell = cell.siblingAtColumn(cell.column() + 1);
    }
}

void Celebration1::Command1_Click()
{
    if (!commitTyped()) return;
    if (!module1_.port().PortOpen()) {
        messages_.say(this, kPortNotOpened);
        return;
    }
    if (!direction_) return;
    tell(QString());
    const auto tables = pointsToSend();
    // All that was begun is sent, also while the window waits to close: a readout must not be left with one new table
    // and one old.
    QStringList troubles;
    for (std::size_t i = 0; i < tables.size() && module1_.port().PortOpen(); ++i) {
        const auto trouble = download(direction_->readings[i], tables[i]);
        if (!trouble.isEmpty()) troubles << trouble;
    }
    if (module1_.port().PortOpen() && !troubles.isEmpty()) tell(troubles.join(u'\n'));
}

/// The points of all readings; none when a single one is missing, which has been said then.
std::vector<Points> Celebration1::pointsToSend()
{
    std::vector<Points> tables;
    for (const auto& reading : direction_->readings) {
        const int column = columnOf(Data1.fields(), reading.column);
        const auto points = pointsOf(Data1, column);
        if (!points) {
            if (column < 0 && !Data1.fields().empty()) tellNoColumn(reading);
            messages_.say(this, kDataEmpty);
            return {};
        }
        tables.push_back(*points);
    }
    return tables;
}

/// @return why there is no verdict of the readout, for the status line; empty when there is one or the port is lost.
QString Celebration1::download(const Reading& reading, const Points& points)
{
    const auto& port = module1_.port();
    const auto frame = downloadFrame(reading, addressDigits(), points);
    const int length = static_cast<int>(frame.size());
    const auto column = link::shown(reading.column);
    tell(tr("Sending %1 ...").arg(column));
    ui_->Progress->setRange(0, length);
    ui_->Progress->setValue(0);
    ui_->Progress->show();
    const auto echo = sendDownload(module1_, reading, frame, [&](int sent) {
        ui_->Progress->setValue(sent);
        if (sent == length && port.PortOpen())
            tell(tr("Waiting up to 10 s for the echo of %1 ...").arg(column));
    });
    ui_->Progress->hide();
    return port.PortOpen() ? judgeEcho(reading, frame, echo) : QString();
}

// An echo of another length is passed over in silence, but for the status line.
QString Celebration1::judgeEcho(const Reading& reading, const std::string& frame, const std::string& echo)
{
    tell(QString());
    if (static_cast<int>(echo.size()) != echoLength(reading)) {
        return tr("%1: no complete echo, %2 characters came instead of %3. Check the address and download "
                  "again.")
            .arg(link::shown(reading.column))
            .arg(echo.size())
            .arg(echoLength(reading));
    }
    const bool taken = echoAgrees(reading, frame, echo);
    messages_.say(this, QString::fromUtf8(taken ? reading.downloaded : reading.notDownloaded));
    return {};
}

void Celebration1::Command2_Click()
{
    if (!commitTyped() || !direction_) return;
    tell(QString());
    ui_->FitChart->clear();
    for (int i = 0; i < static_cast<int>(direction_->readings.size()); ++i) {
        if (!fit(kReadingColumn + i)) return;
    }
}

bool Celebration1::fit(int column)
{
    const auto points = pointsOf(Data1, column);
    if (!points) {
        messages_.say(this, kDataEmpty);
        return false;
    }
    const auto fitted = fitLine(*points);
    if (!fitted) {
        messages_.say(this, kNoLine);
        return false;
    }
    ui_->FitChart->add(
        {model_.headerData(column, Qt::Horizontal, Qt::DisplayRole).toString(), *points, *fitted});
    messages_.say(this, link::shown(fitText(*fitted)));
    return true;
}

void Celebration1::Command3_Click()
{
    if (!mayGoOn() || !direction_) return;
    const auto chosen = messages_.chooseFile(this, {tr("Open"), QString(), false});
    if (chosen.isEmpty()) return;
    Data1.Close();
    const auto loaded = loadWorkingFile(pathOf(chosen), CalibrationDatabasePath, *direction_);
    if (loaded) {
        Data1.setDatabaseName(CalibrationDatabasePath);
        ui_->FitChart->clear();
    }
    const bool bound = bind();
    if (!loaded) {
        tell(loaded.error());
    } else if (bound) {
        tell(loaded->empty() ? tr("Loaded %1.").arg(chosen) : QString::fromStdString(*loaded));
    }
}

void Celebration1::Command4_Click()
{
    if (!commitTyped() || !direction_) return;
    const auto chosen = messages_.chooseFile(this, {tr("Save As"), QStringLiteral("*.mdb"), true});
    if (chosen.isEmpty()) return;
    const auto destination = chosen + kEnding;
    Data1.Close();
    const auto copied = files::replaceByCopy(CalibrationDatabasePath, pathOf(destination));
    const bool bound = bind();
    if (!copied) {
        tell(copied.error());
    } else if (bound) {
        tell(tr("Saved as %1.").arg(destination));
    }
}

void Celebration1::AddCalibrationRow()
{
    if (!commitTyped()) return;
    changed(Data1.AddCalibrationRow());
}

void Celebration1::DeleteLastCalibrationRow()
{
    if (!commitTyped()) return;
    changed(Data1.DeleteLastCalibrationRow());
}

void Celebration1::changed(const jet::Status& done)
{
    model_.reset();
    ui_->FitChart->clear();
    tell(done ? std::string() : done.error());
}

} // namespace quorvel::calibration
