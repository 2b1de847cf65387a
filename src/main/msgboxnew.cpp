#include "main/msgboxnew.h"

#include "ui_msgboxnew.h"

namespace quorvel {

msgboxnew::msgboxnew(QWidget* parent) : QDialog(parent), ui_(std::make_unique<Ui::msgboxnew>())
{
    ui_->setupUi(this);
    connect(ui_->Command1, &QPushButton::clicked, this, &QDialog::accept);
}

msgboxnew::~msgboxnew() = default;

void msgboxnew::showEvent(QShowEvent* event)
{
    ui_->Label1->setText(firstLine_);
    ui_->Label2->setText(secondLine_);
    QDialog::showEvent(event);
}

} // namespace quorvel
