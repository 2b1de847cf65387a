#include "site/visitdialog.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QPushButton>

namespace quorvel::site {

namespace {

constexpr QSize kDialogSize(460, 280);

} // namespace

VisitDialog::VisitDialog(const QString& person, const QDateTime& since, bool portOpen, QWidget* parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("SiteVisit"));
    setWindowTitle(tr("Site Report"));
    auto* rows = new QFormLayout(this);
    person_.setObjectName(QStringLiteral("SitePerson"));
    person_.setText(person);
    remark_.setObjectName(QStringLiteral("SiteRemark"));
    remark_.setTabChangesFocus(true);
    since_.setObjectName(QStringLiteral("SiteSince"));
    since_.setDisplayFormat(QStringLiteral("yyyy-MM-dd HH:mm"));
    since_.setCalendarPopup(true);
    since_.setDateTime(since);
    ask_.setObjectName(QStringLiteral("SiteAsk"));
    ask_.setText(portOpen ? tr("&ask readings, clocks and settings of all readouts first")
                          : tr("&ask the readouts first (the port is closed)"));
    ask_.setEnabled(portOpen);
    ask_.setChecked(portOpen);
    rows->addRow(tr("&Person"), &person_);
    rows->addRow(tr("&Remark"), &remark_);
    rows->addRow(tr("&Changes since"), &since_);
    rows->addRow(&ask_);
    auto* buttons = new QDialogButtonBox;
    auto* save = buttons->addButton(tr("&Save ..."), QDialogButtonBox::AcceptRole);
    save->setObjectName(QStringLiteral("SiteSaveReport"));
    save->setDefault(true);
    buttons->addButton(QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    rows->addRow(buttons);
    save->setFocus();
    resize(kDialogSize);
}

} // namespace quorvel::site
