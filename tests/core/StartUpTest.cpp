#include "core/StartUp.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

using namespace vm;

namespace {
QStringList Parse(const QString& line, bool* result = nullptr) {
    QStringList files;
    const bool ok = ParseCommandLine(line, files);
    if (result) *result = ok;
    return files;
}
} // namespace

TEST(ParseCommandLine, QuotedAndPlainNames) {
    bool ok = false;
    EXPECT_EQ(Parse(QStringLiteral("\"C:\\a b.png\" c.bmp"), &ok), QStringList({"C:\\a b.png", "c.bmp"}));
    EXPECT_TRUE(ok);
    EXPECT_EQ(Parse(QStringLiteral("one.png")), QStringList({"one.png"}));
    // Quoted names may follow each other without a blank in between.
    EXPECT_EQ(Parse(QStringLiteral("\"a b\"\"c d\" e")), QStringList({"a b", "c d", "e"}));
    // A quote inside an unquoted name is part of it.
    EXPECT_EQ(Parse(QStringLiteral("a\"b c")), QStringList({"a\"b", "c"}));
    // Blanks inside quotes survive, also several and at the ends.
    EXPECT_EQ(Parse(QStringLiteral("\"  x  y \"")), QStringList({"  x  y "}));
    // An unterminated quote runs to the end of the line.
    EXPECT_EQ(Parse(QStringLiteral("x \"my pic.png")), QStringList({"x", "my pic.png"}));
    EXPECT_EQ(Parse(QString::fromUtf8("\"照片 1.jpg\" 图.bmp")),
              QStringList({QString::fromUtf8("照片 1.jpg"), QString::fromUtf8("图.bmp")}));
}

TEST(ParseCommandLine, BlanksAndLineBreaks) {
    EXPECT_EQ(Parse(QStringLiteral("   a    b   ")), QStringList({"a", "b"}));
    // Line breaks are dropped, not read as separators.
    EXPECT_EQ(Parse(QStringLiteral("a.png \r\n b.png\n")), QStringList({"a.png", "b.png"}));
    EXPECT_EQ(Parse(QStringLiteral("x\ny.png")), QStringList({"xy.png"}));
    EXPECT_EQ(Parse(QStringLiteral("\"p\nq r\"")), QStringList({"pq r"}));
}

TEST(ParseCommandLine, NothingToOpen) {
    QStringList files{"stale"};
    EXPECT_FALSE(ParseCommandLine(QString(), files));
    EXPECT_TRUE(files.isEmpty());
    for (const char* line : {"", "    ", "\r\n", " \n ", "\"\"", "\"\" \"\""}) {
        bool ok = true;
        EXPECT_TRUE(Parse(QString::fromLatin1(line), &ok).isEmpty()) << line;
        EXPECT_FALSE(ok) << line;
    }
}

TEST(ParseCommandLine, ArgumentsTakeTheSameRoad) {
    const char* argv[] = {"vellumark", "/tmp/my pic.png", "b.bmp", "", "c\"d"};
    QStringList files;
    EXPECT_TRUE(ParseCommandLine(5, argv, files));
    EXPECT_EQ(files, QStringList({"/tmp/my pic.png", "b.bmp", "c\"d"}));
    EXPECT_FALSE(ParseCommandLine(1, argv, files));
    EXPECT_TRUE(files.isEmpty());

    const QStringList args{"a b", "c", QString::fromUtf8("图 片.png")};
    EXPECT_EQ(Parse(JoinCommandLine(args)), args);
}

TEST(FileExists, FilesAndFolders) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString file = dir.filePath(QStringLiteral("a b.png"));
    EXPECT_FALSE(FileExists(file));
    QFile f(file);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.close();
    EXPECT_TRUE(FileExists(file));
    EXPECT_TRUE(FileExists(dir.path()));
    EXPECT_FALSE(FileExists(dir.filePath(QStringLiteral("missing/x.png"))));
    EXPECT_FALSE(FileExists(QString()));
}

TEST(GetTimeStamp, MillisecondsOfASteadyClock) {
    const double a = GetTimeStamp();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    const double b = GetTimeStamp();
    EXPECT_GE(b - a, 19.9);
    EXPECT_LT(b - a, 5000.0);
    // Finer than whole milliseconds: back-to-back readings are not all equal
    // to a whole number.
    bool fraction = false;
    for (int i = 0; i < 100 && !fraction; ++i) {
        const double t = GetTimeStamp();
        fraction = t != static_cast<double>(static_cast<long long>(t));
    }
    EXPECT_TRUE(fraction);
}
