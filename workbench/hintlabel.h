#pragma once

#include <QLabel>

/// One line below a form: what to do next, or what is wrong, which has a colour of its own.
class HintLabel : public QLabel
{
    Q_OBJECT

public:
    explicit HintLabel(const QString &objectName, QWidget *parent = nullptr);

    void showHint(const QString &text) { show(text, false); }
    void showError(const QString &text) { show(text, true); }

protected:
    void changeEvent(QEvent *event) override;

private:
    void show(const QString &text, bool isError);
    void takeColour();

    bool m_isError = false;
    bool m_takesColour = false;
};
