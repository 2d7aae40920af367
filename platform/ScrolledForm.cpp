#include "platform/ScrolledForm.h"

#include <QScrollBar>

namespace runebook {

ScrolledForm::ScrolledForm(QWidget *form, QWidget *parent) : QScrollArea(parent)
{
    setWidget(form);
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setMinimumWidth(form->minimumSizeHint().width() + verticalScrollBar()->sizeHint().width());
}

} // namespace runebook
