// File names that are not UTF-8: carried without loss, listed, opened through
// the library, and passed on to the names of the results.
#include "core/filenames.h"
#include "tests/core/mainwindow_fixture.h"

#include <cmath>

namespace tarnic::test {
namespace {

TEST(FileNames, EveryByteStringRoundTripsAndValidUtf8DecodesAsUsual) {
    // An empty `decoded`: only the round trip is checked.
    const struct { std::string bytes; QString decoded; } cases[] = {
        {"plain.dat", "plain.dat"},
        {"caf\xc3\xa9.dat", QString::fromUtf8("caf\xc3\xa9.dat")},
        {"\xf0\x9f\x98\x80", QString::fromUtf8("\xf0\x9f\x98\x80")},
        {"caf\xe9.dat", "caf" + QString(QChar(char16_t{0xDCE9})) + ".dat"}, // Latin-1
        {"\xc0\xaf", QString(QChar(char16_t{0xDCC0})) + QChar(char16_t{0xDCAF})}, // overlong '/'
        {"\xed\xa0\x80", {}},      // a surrogate written in UTF-8
        {"\xe2\x82", {}},          // cut short
        {"\xf4\x90\x80\x80", {}},  // above U+10FFFF
        {"\xff\xfe", {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.bytes);
        const QString name = decodeFileName(c.bytes);
        EXPECT_EQ(encodeFileName(name), c.bytes);
        if (!c.decoded.isEmpty()) EXPECT_EQ(name, c.decoded);
        EXPECT_FALSE(name.contains(QChar(char16_t{0xFFFD})));
    }
    // A lone surrogate that carries no byte cannot be written: it becomes U+FFFD.
    EXPECT_EQ(encodeFileName(QString(QChar(char16_t{0xD800}))), "\xef\xbf\xbd");
}

TEST_F(MainWindow, ANameThatIsNotUtf8IsListedOpenedAndPassedOnToResults) {
    const std::string latin1 = "caf\xe9"; // "café" as Latin-1 wrote it
    writeBytes(dir / (latin1 + ".dat"), series(64, [](int i) { return std::sin(0.7 * i); }));
    writeBytes(dir / ".hidden.dat", series(64, [](int i) { return i; }));
    fs::create_directory(dir / "d\xfcr");
    start();
    EXPECT_FALSE(ui().File1->selectFile(".hidden.dat"));
    ASSERT_TRUE(ui().File1->selectFile(decodeFileName(latin1 + ".dat")));
    form().File1_DblClick();
    ASSERT_EQ(form().Nrec, 64) << message().toStdString();
    form().IncremButton_Click();
    EXPECT_TRUE(fs::exists(dir / (latin1 + "-INC.dat")));

    // The sub-folder of the same kind is listed and can be entered.
    const QString folder = ui().Dir1->Path() + "/" + decodeFileName("d\xfcr");
    int listed = 0;
    for (int i = 0; i < ui().Dir1->count(); ++i)
        listed += ui().Dir1->item(i)->data(Qt::UserRole).toString() == folder;
    EXPECT_TRUE(listed == 1 && ui().Dir1->setPath(folder));
    EXPECT_EQ(encodeFileName(ui().Dir1->Path()), (dir / "d\xfcr").string());
}

} // namespace
} // namespace tarnic::test
