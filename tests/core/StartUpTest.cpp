#include "core/StartUp.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace vm;

namespace {
QStringList Parse(const QString& line, bool* result = nullptr) {
    QStringList files;
    const bool ok = ParseCommandLine(line, files);
    if (result) *result = ok;
    return files;
}
} // namespace

TEST(ParseCommandLine, QuotesBlanksAndLineBreaks) {
    const std::pair<const char*, QStringList> cases[] = {
        {"\"C:\\a b.png\" c.bmp", {"C:\\a b.png", "c.bmp"}},
        // Quoted names may follow each other without a blank in between.
        {"\"a b\"\"c d\" e", {"a b", "c d", "e"}},
        // A quote inside an unquoted name is part of it.
        {"a\"b c", {"a\"b", "c"}},
        {"\"  x  y \"", {"  x  y "}},
        // An unterminated quote runs to the end of the line.
        {"x \"my pic.png", {"x", "my pic.png"}},
        {"\"照片 1.jpg\" 图.bmp", {"照片 1.jpg", "图.bmp"}},
        {"   a    b   ", {"a", "b"}},
        // Line breaks are dropped, not read as separators.
        {"a.png \r\n b.png\n", {"a.png", "b.png"}},
        {"x\ny.png", {"xy.png"}},
        {"\"p\nq r\"", {"pq r"}},
    };
    for (const auto& [line, want] : cases) {
        bool ok = false;
        EXPECT_EQ(Parse(QString::fromUtf8(line), &ok), want) << line;
        EXPECT_TRUE(ok) << line;
    }
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
