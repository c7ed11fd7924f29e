#pragma once

#include "builderform.h"
#include "canmessagebuilder.h"

#include <QTableWidget>

/// Holds the dialog that the form is of, and so comes ahead of it.
struct OwnedRowBuilder
{
    CanMessageBuilder builder;
};

/// A user at the builder that shows a message as a row of texts.
class RowBuilderForm : public OwnedRowBuilder, public BuilderForm
{
public:
    RowBuilderForm()
        : BuilderForm(builder, "btn_build")
    {
    }

    QTableWidget *table() const { return find<QTableWidget>("tbl_canmessage"); }
    QTableWidgetItem *cell(int column) const { return table()->item(0, column); }

    /// @return the field that a double click on the cell opens
    QLineEdit *editCell(int column) const
    {
        const QPoint place = table()->visualItemRect(cell(column)).center();
        QTest::mouseClick(table()->viewport(), Qt::LeftButton, {}, place);
        QTest::mouseDClick(table()->viewport(), Qt::LeftButton, {}, place);
        return table()->viewport()->findChild<QLineEdit *>();
    }
};

/// The texts of a row, joined by blanks.
inline QStringList texts(const char *joined)
{
    return QString::fromLatin1(joined).split(QLatin1Char(' '));
}
