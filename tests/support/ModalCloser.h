#pragma once
#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QStringList>
#include <QTimer>
#include <QtTest/QTest>

// Presses OK on every message box that opens while it lives, so a test
// never blocks on one, and keeps "title: text" of each box it closed.
class ModalCloser {
public:
    ModalCloser()
    {
        mTimer.setInterval(5);
        QObject::connect(&mTimer, &QTimer::timeout, [this] { closeActiveBox(); });
        mTimer.start();
    }
    QStringList seen;

private:
    void closeActiveBox()
    {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box || !box->isVisible())
            return;
        QAbstractButton* ok = box->button(QMessageBox::Ok);
        seen << box->windowTitle() + ": " + box->text() + (ok ? "" : " (no OK button)");
        if (ok)
            QTest::mouseClick(ok, Qt::LeftButton);
        else
            box->reject();
    }
    QTimer mTimer;
};
