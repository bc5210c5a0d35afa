// The clipboard and its formats.
#include "framework/clipboard.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QMimeData>
#include <array>

#include "tests/framework/test_frame.h"

namespace permora {
namespace {

constexpr auto kMimeType = "application/x-permora.zelclipboarddata";

TEST(ClipboardFormats, AreTheSameForTheSameNameInAnyCase) {
    const unsigned int format = RegisterClipboardFormat("ZELClipboardData");
    EXPECT_GE(format, 0xC000U);
    EXPECT_EQ(RegisterClipboardFormat("zelclipboarddata"), format);
    EXPECT_NE(RegisterClipboardFormat("Another"), format);
    EXPECT_EQ(RegisterClipboardFormat(""), 0U);
}

TEST(Clipboard, KeepsBytesUntilItIsEmptied) {
    TestFrame frame;
    ASSERT_TRUE(frame.Show());
    const unsigned int format = RegisterClipboardFormat("ZELClipboardData");
    const unsigned int other = RegisterClipboardFormat("Another");
    constexpr std::array<std::uint8_t, 4> kBytes{20, 0, 255, 0};
    {
        Clipboard clipboard(frame);
        ASSERT_TRUE(clipboard.IsOpen());
        EXPECT_FALSE(Clipboard(frame).IsOpen());  // one at a time
        EXPECT_TRUE(clipboard.Empty());
        EXPECT_TRUE(clipboard.SetData(format, kBytes));
        EXPECT_TRUE(clipboard.SetData(other, {}));
        EXPECT_FALSE(clipboard.SetData(1, kBytes));  // no registered format
    }
    EXPECT_TRUE(Clipboard::IsFormatAvailable(format));
    EXPECT_EQ(QApplication::clipboard()->mimeData()->data(QLatin1String(kMimeType)).size(), 4);

    Clipboard clipboard(frame);
    EXPECT_EQ(clipboard.GetData(format), std::vector<std::uint8_t>(kBytes.begin(), kBytes.end()));
    EXPECT_TRUE(clipboard.Empty());
    EXPECT_FALSE(clipboard.GetData(format));
    EXPECT_FALSE(Clipboard::IsFormatAvailable(format));
}

TEST(Clipboard, SeesWhatAnotherProgramPutThere) {
    TestFrame frame;
    ASSERT_TRUE(frame.Show());
    const unsigned int format = RegisterClipboardFormat("ZELClipboardData");
    QApplication::clipboard()->setText(QStringLiteral("text"));
    EXPECT_FALSE(Clipboard::IsFormatAvailable(format));
    auto* data = new QMimeData;
    data->setData(QLatin1String(kMimeType), QByteArray("xy"));
    QApplication::clipboard()->setMimeData(data);
    EXPECT_EQ(Clipboard(frame).GetData(format), (std::vector<std::uint8_t>{'x', 'y'}));
    QApplication::clipboard()->clear();
}

TEST(Clipboard, NeedsAWindowToBeOpened) {
    CWnd none;
    EXPECT_FALSE(Clipboard(none).IsOpen());
}

}  // namespace
}  // namespace permora
