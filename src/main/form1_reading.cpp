#include "link/address.h"
#include "link/bytes.h"
#include "main/form1.h"
#include "main/inputfilter.h"
#include "main/whylink.h"
#include "protocol/search.h"
#include "protocol/values.h"
#include "text/number.h"
#include "ui_form1.h"

#include <QApplication>
#include <QClipboard>

// What the main window asks the bus itself: the search and the immediate reading.
namespace quorvel {

using link::bytes;
using link::shown;

namespace {

constexpr auto kImmediateReading = "Immediate Reading";
constexpr auto kStop = "Stop";
constexpr auto kAddressError = "Address Error";
constexpr float kTurnOfReading = 1; // s between two looks at the time of day

/// The addresses as a tool tip that shows all of a long list.
QString inRows(const std::vector<std::string>& addresses)
{
    constexpr std::size_t kAddressesPerRow = 20;
    QString rows;
    for (std::size_t i = 0; i < addresses.size(); ++i) {
        if (i > 0) rows += i % kAddressesPerRow == 0 ? u'\n' : u' ';
        rows += shown(addresses[i]);
    }
    return rows;
}

} // namespace

void Form1::Command4_Click()
{
    if (!module1_.port().PortOpen()) {
        messages_.say(this, kPortNotOpened);
        return;
    }
    const WhyLink::Command command(why_);
    ui_->NoList->setText(protocol::kSearching);
    showFound(protocol::foundAddresses(module1_.transact(protocol::search()).reply));
}

void Form1::showFound(const std::vector<std::string>& addresses)
{
    found_ = addresses;
    ui_->NoList->setText(shown(protocol::foundText(addresses)));
    ui_->NoList->setToolTip(inRows(addresses));
    if (module1_.port().PortOpen()) showStatus(tr("Readouts found: %1").arg(addresses.size()));
    if (!addresses.empty()) ui_->TestNo->setText(shown(addresses.front()));
}

bool Form1::isReading() const { return ui_->Command2->text() == kStop; }

void Form1::Command2_Click()
{
    if (isReading()) {
        stopFlag_ = true;
        ui_->Command1->setEnabled(false);
        return;
    }
    gate_.run([this] { immediateReading(); });
}

bool Form1::addressIsValid()
{
    const double address = text::Val(bytes(ui_->TestNo->text()));
    return address >= link::kLowestAddress && address <= link::kHighestAddress;
}

void Form1::immediateReading()
{
    if (!module1_.port().PortOpen()) {
        messages_.say(this, kPortNotOpened);
        return;
    }
    if (!addressIsValid()) {
        messages_.say(this, kAddressError);
        return;
    }
    const WhyLink::Command command(why_);
    beginReading();
    for (;;) {
        module1_.clock().letEventsRun();
        if (stopFlag_ || gate_.stopRequested()) break;
        const auto time = module1_.clock().now().toString(QStringLiteral("HH:mm:ss"));
        if (time.endsWith(u'0')) addReading(time);
        module1_.WaitForInput(kTurnOfReading, 0);
    }
    endReading();
}

void Form1::beginReading()
{
    ui_->Command2->setText(kStop);
    ui_->Command1->setEnabled(false);
    ui_->Command4->setEnabled(false);
    unlock(true);
    ui_->Command2->setFocus();
    stopFlag_ = false;
    ui_->List1->clear();
    showStatus(tr("A reading is taken every ten seconds, when the seconds end in 0."));
}

/// What may be operated although readings run; the focus gets there from everywhere.
void Form1::unlock(bool on)
{
    for (auto* widget :
         std::initializer_list<QWidget*>{ui_->Command2, ui_->TestNo, ui_->List1, ui_->InstrumentType}) {
        InputFilter::letThrough(widget, on);
    }
    InputFilter::letFocusMove(this, on);
}

// The address and the type are read anew for each reading: the operator may turn to another readout meanwhile.
void Form1::addReading(const QString& time)
{
    const int address = text::integerOf(bytes(ui_->TestNo->text()));
    const auto line =
        time + QStringLiteral("  ") + shown(protocol::ReadSensorValues(module1_, address, bench_));
    ui_->List1->addItem(line);
    ui_->List1->setCurrentRow(ui_->List1->count() - 1);
}

void Form1::endReading()
{
    unlock(false);
    ui_->Command2->setText(kImmediateReading);
    ui_->Command1->setEnabled(true);
    ui_->Command4->setEnabled(true);
    if (module1_.port().PortOpen()) showStatus(tr("Immediate Reading has ended."));
}

void Form1::copyReadings()
{
    QStringList lines;
    for (int row = 0; row < ui_->List1->count(); ++row) {
        lines << ui_->List1->item(row)->text();
    }
    QApplication::clipboard()->setText(lines.join(u'\n'));
}

} // namespace quorvel
