#include "settings/settingscompare.h"

#include "files/replace.h"
#include "link/address.h"
#include "link/bytes.h"
#include "main/inputfilter.h"
#include "protocol/direction.h"
#include "text/duration.h"
#include "text/number.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>

namespace quorvel {

namespace {

using Side = SettingsModel::Side;
using protocol::settings;

constexpr auto kFileFilter = "Settings(*.json)";
constexpr int kExchangesPerRow = 3; // what was there, the new value, what is there now
constexpr double kMsPerSecond = 1000;

const protocol::Setting& settingOf(int row) { return settings()[static_cast<std::size_t>(row)]; }

QString inWords(const SettingsModel::Whose& whose)
{
    QStringList words;
    if (whose.address != 0) words << SettingsCompare::tr("readout %1").arg(whose.address);
    if (whose.type) {
        words << SettingsCompare::tr("type %1").arg(link::shown(std::string(protocol::nameOf(*whose.type))));
    }
    return words.join(QStringLiteral(", "));
}

} // namespace

SettingsCompare::SettingsCompare(const Workplace& workplace, QWidget* parent) : BusWindow(workplace, parent)
{
    setObjectName(QStringLiteral("Settings"));
    setWindowTitle(tr("Settings"));
    layOut();
    useAddressBox(now_.address);
    for (auto* controls : {&now_, &other_}) {
        controls->type.setCurrentIndex(bench_.instrumentType - link::TypeA);
    }
    connectControls();
    for (const auto side : {Side::Now, Side::Other}) {
        model_.begin(side, whoseOf(controlsOf(side)));
    }
    hideWhatIsOfNone();
}

void SettingsCompare::connectControls()
{
    for (const auto side : {Side::Now, Side::Other}) {
        auto& controls = controlsOf(side);
        // What was read is of the readout that was asked.
        const auto renamed = [this, side] {
            const auto whose = whoseOf(controlsOf(side));
            if (whose != model_.whose(side)) model_.begin(side, whose);
            hideWhatIsOfNone();
        };
        connect(&controls.address, &QLineEdit::textChanged, this, renamed);
        connect(&controls.type, &QComboBox::currentIndexChanged, this, renamed);
        onClick(&controls.read, [this, side] { Read_Click(side); });
        enterPresses(&controls.address, &controls.read);
    }
    onClick(&open_, [this] { Open_Click(); });
    onClick(&save_, [this] { Save_Click(); });
    onClick(&send_, [this] { Send_Click(); });
    connect(&source_, &QComboBox::currentIndexChanged, this,
            [this](int index) { model_.setSource(index == 0 ? Side::File : Side::Other); });
    connect(&differing_, &QPushButton::clicked, &model_, &SettingsModel::chooseWhatDiffers);
    connect(&none_, &QPushButton::clicked, &model_, &SettingsModel::chooseNothing);
    connect(&stop_, &QPushButton::clicked, this, [this] { stopPressed_ = true; });
    connect(&model_, &SettingsModel::dataChanged, &table_, &QTableView::resizeRowsToContents);
}

void SettingsCompare::hideWhatIsOfNone()
{
    for (int row = 0; row < model_.rowCount(); ++row) {
        table_.setRowHidden(row, !model_.concerns(row));
    }
}

SettingsModel::Whose SettingsCompare::whoseOf(Readout& controls) const
{
    const auto typed = link::bytes(controls.address.text().trimmed());
    const int number = text::allDigits(typed) ? text::integerOf(typed) : 0;
    return {link::isAddress(number) ? number : 0,
            static_cast<link::InstrumentType>(link::TypeA + controls.type.currentIndex())};
}

bool SettingsCompare::mayTalkTo(const SettingsModel::Whose& whose)
{
    if (whose.address == 0) {
        addStatus(tr("Nothing was sent: give the address of a readout, 1 to 249."));
        return false;
    }
    if (module1_.port().PortOpen()) return true;
    say(kPortNotOpened);
    return false;
}

void SettingsCompare::begin(int exchanges)
{
    stopPressed_ = false;
    run_ = {.total = exchanges, .done = 0, .answered = false, .begun = module1_.clock().now(), .ended = {}};
    progress_.setMaximum(exchanges);
    progress_.setValue(0);
    progress_.setFormat(tr("%v of %m"));
    stop_.setEnabled(true);
    InputFilter::letFocusMove(this);
}

link::Exchange SettingsCompare::step(link::Transaction transaction)
{
    transaction.drains = true;
    auto exchange = perform(transaction);
    ++run_.done;
    const auto each = static_cast<double>(run_.begun.msecsTo(module1_.clock().now())) / run_.done;
    const auto left = std::max(0.0, (run_.total - run_.done) * each / kMsPerSecond);
    progress_.setValue(run_.done);
    progress_.setFormat(tr("%v of %m, %1").arg(link::shown(text::timeLeft(left))));
    using link::Outcome;
    const bool silentFromTheStart = exchange.outcome == Outcome::Silent && !run_.answered;
    const bool over = exchange.outcome == Outcome::PortLost || exchange.outcome == Outcome::Abandoned ||
                      exchange.outcome == Outcome::Refused;
    if (silentFromTheStart || over) run_.ended = protocol::whyFailed(exchange);
    if (!exchange.reply.empty()) run_.answered = true;
    return exchange;
}

bool SettingsCompare::goesOn()
{
    if (run_.ended.isEmpty() && (stopPressed_ || gate_.stopRequested())) run_.ended = tr("Stopped.");
    return run_.ended.isEmpty();
}

void SettingsCompare::end(const QString& done)
{
    stop_.setEnabled(false);
    InputFilter::letFocusMove(this, false);
    progress_.reset();
    progress_.setFormat(QString());
    addStatus(run_.ended);
    addStatus(done);
    hideWhatIsOfNone();
}

void SettingsCompare::Read_Click(Side side)
{
    const auto whose = whoseOf(controlsOf(side));
    if (!mayTalkTo(whose)) return;
    model_.begin(side, whose);
    const auto all = protocol::settingsOf(*whose.type);
    begin(static_cast<int>(all.size()));
    const auto digits = link::AddressToHex(whose.address);
    for (int row = 0; row < model_.rowCount(); ++row) {
        const auto& setting = settingOf(row);
        if (!setting.isFor(*whose.type)) continue;
        if (goesOn()) {
            model_.put(side, row, protocol::toldBy(setting, step(setting.query(digits))));
        } else {
            model_.put(side, row, {QJsonValue::Null, tr("Not asked.")});
        }
    }
    const auto unread = model_.unread(side).size();
    end(tr("Settings read from %1: %2 of %3.").arg(inWords(whose)).arg(run_.total - unread).arg(run_.total));
}

void SettingsCompare::Open_Click()
{
    const auto path = messages_.chooseFile(this, {tr("Open Settings"), tr(kFileFilter)});
    if (path.isEmpty()) return;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return say(tr("%1 cannot be read: %2.").arg(path, file.errorString()));
    const auto read = protocol::settingsIn(file.read(protocol::kLongestSettings));
    if (const auto* why = std::get_if<QString>(&read))
        return say(tr("%1 is not a settings file: %2.").arg(path, *why));
    const auto& found = std::get<protocol::SettingsFile>(read);
    const auto others = model_.setFile(found);
    source_.setCurrentIndex(0);
    hideWhatIsOfNone();
    addStatus(tr("%1, saved %2.")
                  .arg(QFileInfo(path).fileName(),
                       found.saved.isEmpty() ? tr("at an unknown time") : protocol::inWords(found.saved)));
    if (!others.isEmpty())
        addStatus(tr("It also holds what is not a setting: %1.").arg(protocol::inWords(others.join(u' '))));
}

void SettingsCompare::Save_Click()
{
    if (const auto unread = model_.unread(Side::Now); !unread.isEmpty()) {
        return addStatus(tr("Nothing was saved. Not read from the readout: %1. Press \"Read\" first.")
                             .arg(unread.join(QStringLiteral(", "))));
    }
    const auto path = messages_.chooseFile(this, {tr("Save Settings"), tr(kFileFilter), true});
    if (path.isEmpty() || !mayWrite(messages_, this, path)) return;
    const auto& whose = model_.whose(Side::Now);
    const auto text = protocol::textOf({.address = whose.address,
                                        .type = whose.type,
                                        .saved = module1_.clock().now().toString(Qt::ISODate),
                                        .settings = model_.values(Side::Now)});
    const auto written = files::replaceContent(QFileInfo(path).filesystemFilePath(), text.toStdString());
    if (!written) return say(QString::fromStdString(written.error()));
    addStatus(tr("Saved in %1.").arg(path));
}

bool SettingsCompare::maySend(std::size_t count)
{
    const auto& from = model_.whose(model_.source());
    const auto& to = model_.whose(Side::Now);
    const bool otherAddress = from.address != 0 && from.address != to.address;
    const bool otherType = from.type && from.type != to.type;
    if (!otherAddress && !otherType) return true;
    return messages_.ask(
        this,
        tr("The values are of %1. Send %2 of them to %3?").arg(inWords(from)).arg(count).arg(inWords(to)));
}

void SettingsCompare::Send_Click()
{
    const auto rows = model_.chosen();
    if (rows.empty()) return addStatus(tr("Nothing was sent: choose the settings first."));
    if (!mayTalkTo(model_.whose(Side::Now)) || !maySend(rows.size())) return;
    model_.beginSending();
    for (const int column :
         {SettingsModel::BeforeColumn, SettingsModel::SentColumn, SettingsModel::ReadBackColumn}) {
        table_.showColumn(column);
    }
    begin(static_cast<int>(rows.size()) * kExchangesPerRow);
    for (const int row : rows) {
        if (goesOn()) {
            sendOne(row);
        } else {
            model_.putSent(row, tr("Not sent."));
        }
    }
    end(tr("Set and verified: %1 of %2.").arg(model_.verifiedCount()).arg(rows.size()));
}

// A readout that does not tell what it holds is not written to. Once the value went out, it is asked for whatever the
// answer was: the readout may have taken it.
void SettingsCompare::sendOne(int row)
{
    const auto& setting = settingOf(row);
    const auto digits = link::AddressToHex(model_.whose(Side::Now).address);
    const auto before = protocol::toldBy(setting, step(setting.query(digits)));
    model_.putBefore(row, before);
    if (before.value.isNull()) return model_.putSent(row, tr("Not sent."));
    const auto command = setting.write(digits, model_.wanted(row));
    const auto* transaction = std::get_if<link::Transaction>(&command);
    if (!transaction || !goesOn()) return model_.putSent(row, tr("Not sent."));
    const auto exchange = step(*transaction);
    model_.putSent(row, link::isConfirmed(exchange) ? QString() : protocol::whyFailed(exchange));
    if (exchange.frameWentOut())
        model_.putReadBack(row, protocol::toldBy(setting, step(setting.query(digits))));
}

} // namespace quorvel
