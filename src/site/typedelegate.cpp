#include "site/typedelegate.h"

#include <QComboBox>

namespace quorvel::site {

QWidget* TypeDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem& /*option*/,
                                    const QModelIndex& /*index*/) const
{
    auto* list = new QComboBox(parent);
    list->addItems({QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C"), QStringLiteral("D")});
    list->setAccessibleName(tr("Type"));
    return list;
}

void TypeDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const
{
    qobject_cast<QComboBox*>(editor)->setCurrentText(index.data(Qt::EditRole).toString());
}

void TypeDelegate::setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const
{
    model->setData(index, qobject_cast<QComboBox*>(editor)->currentText(), Qt::EditRole);
}

} // namespace quorvel::site
