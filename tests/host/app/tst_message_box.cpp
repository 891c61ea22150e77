#include "host/app/PfEdMessageBoxSink.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QTimer>

#include <gtest/gtest.h>

namespace {

TEST(MessageBoxSink, showsAModalBoxWithTheTitleAndText)
{
    PfEdMessageBoxSink sink;
    PfEdInformationSink* previous = PfEdInformationSink::Install(&sink);
    QString title, text;
    bool modal = false;
    // The box blocks until it is closed: read it and press OK from the loop.
    QTimer::singleShot(0, [&] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_NE(box, nullptr);
        title = box->windowTitle();
        text = box->text();
        modal = box->isModal();
        box->button(QMessageBox::Ok)->click();
    });
    PfEdInformation(QStringLiteral("请先选中一帧关键帧再删除"), QStringLiteral("提示"));
    PfEdInformationSink::Install(previous);
    EXPECT_EQ(title.toStdString(), "提示");
    EXPECT_EQ(text.toStdString(), "请先选中一帧关键帧再删除");
    EXPECT_TRUE(modal);
}

} // namespace
