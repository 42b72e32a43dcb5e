#include "core/StartUpTables.h"

#include <QColor>
#include <QRegularExpression>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

using namespace vm;

namespace {

// The distinct values of one field of a table.
template <typename T> std::set<T> Distinct(const std::vector<NamedColor>& table, T NamedColor::*field) {
    std::set<T> out;
    for (const NamedColor& c : table)
        out.insert(c.*field);
    return out;
}

int32_t Rgb(int r, int g, int b) {
    return r | (g << 8) | (b << 16);
}

} // namespace

TEST(LabCubeRootTable, KnownEntriesAndExactFloor) {
    ASSERT_EQ(LabCubeRootTable.size(), 512u);
    // Every entry is the floor: n^3 <= 1024^3 * i / 255 < (n + 1)^3. At
    // i = 255 the cube is exact, where a floating cube root gives 1023.999.
    for (int64_t i = 0; i < 512; ++i) {
        const int64_t n = LabCubeRootTable[i];
        const int64_t scaled = (int64_t{1} << 30) * i;
        EXPECT_LE(n * n * n * 255, scaled) << i;
        EXPECT_GT((n + 1) * (n + 1) * (n + 1) * 255, scaled) << i;
    }
}

TEST(NamedColorTable, AllNamesAreTheStandardColours) {
    const auto& table = NamedColorTable();
    ASSERT_EQ(table.size(), 140u);
    EXPECT_EQ(Distinct(table, &NamedColor::Name).size(), 140u);
    EXPECT_EQ(table[0].Name, "alice blue");
    EXPECT_EQ(table[1].Name, "antique white");
    EXPECT_EQ(table.back().Name, "yellow green");
    for (const NamedColor& c : table) {
        EXPECT_EQ(c.Name, c.Name.toLower());
        EXPECT_EQ(c.Name, c.Name.trimmed());
        // Qt knows the same colours under the names without blanks.
        const QColor q = QColor::fromString(QString(c.Name).remove(u' '));
        ASSERT_TRUE(q.isValid()) << c.Name.toStdString();
        EXPECT_EQ(c.Color, Rgb(q.red(), q.green(), q.blue())) << c.Name.toStdString();
    }
}

TEST(DefaultSwatchTable, SwatchBook) {
    const auto& table = DefaultSwatchTable();
    ASSERT_EQ(table.size(), 121u);
    EXPECT_EQ(Distinct(table, &NamedColor::Name).size(), 121u);
    const char* const first[6] = {"RGB红", "RGB黄", "RGB绿", "RGB青", "RGB蓝", "RGB洋红"};
    const int32_t firstColors[6] = {Rgb(255, 0, 0),   Rgb(255, 255, 0), Rgb(0, 255, 0),
                                    Rgb(0, 255, 255), Rgb(0, 0, 255),   Rgb(255, 0, 255)};
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(table[i].Name, QString::fromUtf8(first[i]));
        EXPECT_EQ(table[i].Color, firstColors[i]);
    }
    auto find = [&](const char* name) {
        auto it = std::find_if(table.begin(), table.end(),
                               [&](const NamedColor& c) { return c.Name == QString::fromUtf8(name); });
        return it == table.end() ? -1 : it->Color;
    };
    EXPECT_EQ(find("10%灰色"), Rgb(230, 230, 230));
    EXPECT_EQ(find("黑色"), 0);
    for (const NamedColor& c : table)
        EXPECT_EQ(c.Color & ~0xFFFFFF, 0) << c.Name.toStdString();
}

TEST(WebColorTable, FiveBooksOfTheWebSafeColours) {
    std::set<int32_t> webSafe;
    for (int r = 0; r < 256; r += 0x33)
        for (int g = 0; g < 256; g += 0x33)
            for (int b = 0; b < 256; b += 0x33)
                webSafe.insert(Rgb(r, g, b));
    ASSERT_EQ(webSafe.size(), 216u);

    const size_t sizes[5] = {216, 216, 341, 216, 216};
    const QRegularExpression format(QStringLiteral("^#[0-9A-F]{6}$"));
    for (int book = 0; book < WebColorBookCount; ++book) {
        const auto& table = WebColorTable(book);
        ASSERT_EQ(table.size(), sizes[book]) << book;
        const std::set<int32_t> colors = Distinct(table, &NamedColor::Color);
        EXPECT_EQ(colors.size(), sizes[book]) << "duplicates in book " << book;
        for (const NamedColor& c : table) {
            EXPECT_TRUE(format.match(c.Name).hasMatch()) << c.Name.toStdString();
            EXPECT_EQ(c.Name.mid(1).toInt(nullptr, 16), c.Color) << c.Name.toStdString();
        }
        EXPECT_TRUE(std::includes(colors.begin(), colors.end(), webSafe.begin(), webSafe.end())) << book;
    }
    EXPECT_TRUE(WebColorTable(-1).empty());
    EXPECT_TRUE(WebColorTable(WebColorBookCount).empty());
}
