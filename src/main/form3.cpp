#include "main/form3.h"

#include <QFile>
#include <QTextStream>

#include <algorithm>

namespace quorvel {

namespace {

constexpr int kTwipsPerPixel = 15;
constexpr int kMargin = 180;     // twips
constexpr int kBelowText = 1000; // twips

int pixels(int twips) { return qRound(static_cast<double>(twips) / kTwipsPerPixel); }

} // namespace

Form3::Form3(std::filesystem::path file, QWidget* parent)
    : QDialog(parent), file_(std::move(file)), text1_(this), command1_(QStringLiteral("Quit"), this)
{
    setObjectName(QStringLiteral("Form3"));
    setWindowTitle(QStringLiteral("Help"));
    setWindowFlag(Qt::WindowMinMaxButtonsHint);
    setMinimumSize(200, 160);
    text1_.setObjectName(QStringLiteral("Text1"));
    text1_.setAccessibleName(QStringLiteral("Help"));
    text1_.setReadOnly(true);
    text1_.setTabChangesFocus(true);
    QFont font(QStringLiteral("Times New Roman"), 12);
    font.setStyleHint(QFont::Serif);
    text1_.setFont(font);
    command1_.setObjectName(QStringLiteral("Command1"));
    connect(&command1_, &QPushButton::clicked, this, &QDialog::accept);
    resize(680, 560);
}

QString Form3::whyUnreadable(const std::filesystem::path& file)
{
    QFile readable(file);
    if (readable.open(QIODevice::ReadOnly)) return {};
    return tr("The help text cannot be read: %1 (%2). Put the file \"readme.txt\" into that folder.")
        .arg(readable.fileName(), readable.errorString());
}

void Form3::resizeEvent(QResizeEvent* event)
{
    QDialog::resizeEvent(event);
    layOut();
    readFile();
}

void Form3::layOut()
{
    const auto button = command1_.sizeHint();
    const int textWidth = std::max(0, width() * kTwipsPerPixel - 2 * kMargin);
    const int textHeight = std::max(0, height() * kTwipsPerPixel - kBelowText);
    text1_.setGeometry(pixels(kMargin), pixels(kMargin), pixels(textWidth), pixels(textHeight));
    command1_.setGeometry((width() - button.width()) / 2, pixels(kMargin + textHeight + kMargin),
                          button.width(), button.height());
}

void Form3::readFile()
{
    text1_.clear();
    QFile file(file_);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        text1_.setPlainText(whyUnreadable(file_));
        return;
    }
    QTextStream lines(&file);
    QString text;
    for (QString line; lines.readLineInto(&line);) {
        text += line + u'\n';
    }
    text1_.setPlainText(text);
}

} // namespace quorvel
