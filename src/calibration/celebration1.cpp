#include "calibration/celebration1.h"

#include "calibration/database.h"
#include "calibration/fit.h"
#include "files/name.h"
#include "files/replace.h"
#include "link/bytes.h"
#include "protocol/answer.h"
#include "protocol/measurement.h"
#include "text/number.h"
#include "ui_celebration1.h"

#include <QFileInfo>

#include <algorithm>

namespace quorvel::calibration {

namespace {

constexpr auto kEnding = ".mdb";

std::filesystem::path pathOf(const QString& name) { return QFileInfo(name).filesystemFilePath(); }

} // namespace

Celebration1::Celebration1(const Workplace& workplace, QWidget* parent)
    : BusWindow(workplace, parent), ui_(std::make_unique<Ui::Celebration1>()), model_(Data1)
{
    ui_->setupUi(this);
    setWindowFlag(Qt::WindowMaximizeButtonHint);
    auto keepsPlace = ui_->Progress->sizePolicy();
    keepsPlace.setRetainSizeWhenHidden(true);
    ui_->Progress->setSizePolicy(keepsPlace);
    ui_->Progress->hide();
    useStatusLine(*ui_->Status);
    useAddressBox(*ui_->Text1);
    ui_->DBGrid1->setModel(&model_);
    ui_->DBGrid1->showRows(kPoints);
    onSignal(ui_->DBGrid1, &DBGrid::ButtonClick, [this] { DBGrid1_ButtonClick(); });
    onClick(ui_->Command1, [this] { Command1_Click(); });
    onClick(ui_->Command2, [this] { Command2_Click(); });
    onClick(ui_->Command3, [this] { Command3_Click(); });
    onClick(ui_->Command4, [this] { Command4_Click(); });
    connect(&model_, &CalibrationModel::told, this, [this](const QString& words) { tell(words); });
    // A line that no longer belongs to the points would mislead.
    connect(&model_, &CalibrationModel::dataChanged, ui_->FitChart, &FitChart::clear);
    connect(&model_, &CalibrationModel::dataChanged, this, [this] { tell(QString()); });
    Form_Load();
}

Celebration1::~Celebration1() { commitTyped(); }

void Celebration1::tellNoColumn(const ReadingColumn& reading)
{
    tell("The file has no column " + std::string(reading.name) + ". Load another file.");
}

/// The first point with a value that makes the frame longer than the readout expects, also while others are missing.
QString Celebration1::tooLong() const
{
    if (!direction_) return {};
    std::vector<int> columns{columnOf(Data1.fields(), kDialName)};
    for (const auto& reading : direction_->readings) {
        columns.push_back(columnOf(Data1.fields(), reading.name));
    }
    for (int row = 0; row < std::min(Data1.rowCount(), kPoints); ++row) {
        for (const int column : columns) {
            const auto number = column < 0 ? std::nullopt : Data1.value(row, column).number();
            if (!number || protocol::fitsCalibrationField(*number)) continue;
            return tr("Point %1 has the value %2: a download cannot succeed with values of 1000 or more.")
                .arg(QString::fromStdString(Data1.value(row, kNumberColumn).text()),
                     QString::fromStdString(Data1.value(row, column).text()));
        }
    }
    return {};
}

QString Celebration1::warning() const
{
    QStringList texts{BusWindow::warning(), tooLong(), ofAnotherReadout()};
    texts.removeAll(QString());
    return texts.join(u' ');
}

QString Celebration1::standing() const
{
    if (!unreadableBecause_.empty()) return QString::fromStdString(unreadableBecause_);
    if (!Data1.readOnlyBecause().empty()) {
        return tr("The points can be looked at, not changed: %1")
            .arg(QString::fromStdString(Data1.readOnlyBecause()));
    }
    if (Data1.olderKeptAs().empty()) return CalibrationDatabasePath.empty() ? QString() : fileAndPoints();
    return tr("The file was written anew, because its older format can only be read. The older file is kept "
              "as %1.")
        .arg(QString::fromStdString(files::inWords(Data1.olderKeptAs())));
}

void Celebration1::Form_Load()
{
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
    record_ = std::make_unique<RecordFile>(CalibrationDatabasePath, *direction_);
    record_->load();
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
    const auto reply = perform(protocol::measurement(direction_->direction, addressDigits())).reply;
    if (protocol::isMeasurement(reply)) {
        tell(QString());
        takeMeasurement(cell, reply);
    } else if (module1_.port().PortOpen()) {
        tell(tr("Nothing was measured: %1. Check the address and press again.")
                 .arg(QString::fromStdString(protocol::whyNoMeasurement(reply))));
    }
}

// A field that holds no number leaves its cell as it is; blanks would empty it.
void Celebration1::takeMeasurement(const QModelIndex& first, const std::string& reply)
{
    auto cell = first;
    std::vector<double> readings;
    for (const auto& reading : direction_->readings) {
        if (!cell.isValid()) return tellNoColumn(reading);
        const auto measured = protocol::measuredBy(reading.sensor, reply);
        if (!text::isNumber(measured)) {
            addStatus(tr("%1 was not measured: the readout answered \"%2\". The cell stays as it was.")
                          .arg(link::shown(reading.name), link::shown(protocol::inOneLine(measured))));
        } else {
            ui_->DBGrid1->setCurrentIndex(cell);
            if (!model_.setData(cell, link::shown(measured))) return;
            readings.push_back(text::Val(measured));
        }
        cell = cell.siblingAtColumn(cell.column() + 1);
    }
    noteReadings(first.row(), readings);
}

void Celebration1::Command1_Click()
{
    if (!commitTyped()) return;
    if (!module1_.port().PortOpen()) {
        say(kPortNotOpened);
        return;
    }
    if (!direction_) return;
    clearStatus();
    const auto tables = pointsToSend();
    // All that was begun is sent, also while the window waits to close: a readout must not be left with one new table
    // and one old.
    QStringList troubles;
    if (!tables.empty()) troubles << keepCopy();
    for (std::size_t i = 0; i < tables.size() && module1_.port().PortOpen(); ++i) {
        troubles << download(direction_->readings[i], tables[i]);
    }
    troubles.removeAll(QString());
    if (module1_.port().PortOpen() && !troubles.isEmpty()) tell(troubles.join(u'\n'));
}

/// The points of all readings; none when a single one is missing, which has been said then.
std::vector<Points> Celebration1::pointsToSend()
{
    std::vector<Points> tables;
    for (const auto& reading : direction_->readings) {
        const int column = columnOf(Data1.fields(), reading.name);
        const auto points = pointsOf(Data1, column);
        if (!points) {
            if (column < 0 && !Data1.fields().empty()) tellNoColumn(reading);
            say(kDataEmpty);
            return {};
        }
        tables.push_back(*points);
    }
    return tables;
}

/// @return why there is no verdict of the readout, for the status line; empty when there is one or the port is lost.
QString Celebration1::download(const ReadingColumn& reading, const Points& points)
{
    const auto transaction = protocol::tableDownload(reading.sensor, addressDigits(), points);
    const int length = static_cast<int>(transaction.frame.size());
    const auto column = link::shown(reading.name);
    tell(tr("Sending %1 ...").arg(column));
    ui_->Progress->setRange(0, length);
    ui_->Progress->setValue(0);
    ui_->Progress->show();
    const auto exchange = perform(transaction, [&](int sent) {
        ui_->Progress->setValue(sent);
        if (sent == length && module1_.port().PortOpen())
            tell(tr("Waiting up to 10 s for the echo of %1 ...").arg(column));
    });
    ui_->Progress->hide();
    noteDownload(reading, exchange);
    return module1_.port().PortOpen() ? judgeEcho(reading, exchange) : QString();
}

// An echo of another length is passed over in silence, but for the status line.
QString Celebration1::judgeEcho(const ReadingColumn& reading, const link::Exchange& exchange)
{
    clearStatus();
    const int awaited = protocol::echoLength(reading.sensor);
    if (exchange.outcome == link::Outcome::Refused) return protocol::whyFailed(exchange);
    if (static_cast<int>(exchange.reply.size()) != awaited) {
        return tr("%1: no complete echo, %2 characters came instead of %3. Check the address and download "
                  "again.")
            .arg(link::shown(reading.name))
            .arg(exchange.reply.size())
            .arg(awaited);
    }
    const auto& row = protocol::tableOf(reading.sensor);
    const bool taken = protocol::echoAgrees(reading.sensor, exchange.transaction.frame, exchange.reply);
    say(QString::fromUtf8(taken ? row.downloaded : row.notDownloaded));
    return {};
}

void Celebration1::Command2_Click()
{
    if (!commitTyped() || !direction_) return;
    clearStatus();
    ui_->FitChart->clear();
    for (int i = 0; i < static_cast<int>(direction_->readings.size()); ++i) {
        if (!fit(kReadingColumn + i)) return;
    }
}

bool Celebration1::fit(int column)
{
    const auto points = pointsOf(Data1, column);
    if (!points) {
        say(kDataEmpty);
        return false;
    }
    const auto fitted = fitLine(*points);
    if (!fitted) {
        say(kNoLine);
        return false;
    }
    ui_->FitChart->add(
        {model_.headerData(column, Qt::Horizontal, Qt::DisplayRole).toString(), *points, *fitted});
    say(link::shown(fitText(*fitted)));
    return true;
}

void Celebration1::Command3_Click()
{
    if (!mayGoOn() || !direction_) return;
    const auto chosen = messages_.chooseFile(this, {tr("Open"), QString(), false});
    if (chosen.isEmpty()) return;
    Data1.Close();
    const auto loaded = loadWorkingFile(pathOf(chosen), CalibrationDatabasePath, *direction_);
    record_->load();
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
