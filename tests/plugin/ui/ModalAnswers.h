// Answers modal windows in widget tests.
#pragma once

#include <QtTest>
#include <QtWidgets>

/// Timer that answers modal windows while it exists: types a path into file dialogs, or presses Escape if the path is
/// empty; presses Enter in message boxes.
class ModalAnswers : public QObject {
public:
    explicit ModalAnswers(const QString &typed) : m_typed(typed) { startTimer(5); }
    QStringList seen; // title, filter and options of file dialogs; text of message boxes

protected:
    void timerEvent(QTimerEvent *) override
    {
        QWidget *window = QApplication::activeModalWidget();
        if (auto *box = qobject_cast<QMessageBox *>(window)) {
            seen.append(box->text());
            QTest::keyClick(box, Qt::Key_Enter);
        } else if (auto *dialog = qobject_cast<QFileDialog *>(window)) {
            seen.append(window->windowTitle() + QLatin1Char('|') + dialog->nameFilters().join(QLatin1Char('|'))
                        + QStringLiteral("|%1").arg(int(dialog->options())));
            auto *edit = window->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
            edit->clear();
            QTest::keyClicks(edit, m_typed);
            QTest::keyClick(edit, m_typed.isEmpty() ? Qt::Key_Escape : Qt::Key_Enter);
        }
    }

private:
    QString m_typed;
};
