// vellumark-cli from the outside: exit codes, messages, outputs, and the
// argument parser from the inside.
#include "Arguments.h"
#include "core/Image.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <gtest/gtest.h>

namespace {

struct CliResult {
    int Code;
    QString Out;
    QString Err;
};

CliResult Cli(const QStringList& args) {
    QByteArray out, err;
    const int code = vmtest::Run(QStringLiteral(VELLUMARK_CLI), args, &out, &err);
    return {code, QString::fromUtf8(out), QString::fromUtf8(err)};
}

QString Sample(const QString& name, int bits) {
    const QString path = QDir(vmtest::TempDir()).filePath(name);
    auto img = vmtest::RandomImage(13, 7, bits, 11);
    img->Resolution = 96;
    EXPECT_TRUE(img->SavePictureToFile(path, vm::RawBmp, vm::SaveOptions()));
    return path;
}

} // namespace

TEST(CliArguments, ParsesEveryCommandShape) {
    vmcli::Arguments a;
    QString error;
    ASSERT_TRUE(vmcli::ParseArguments({"convert", "in.bmp", "out.bmp", "--format", "1", "--option", "Rle=1",
                                       "--frame", "2"},
                                      a, error));
    EXPECT_EQ(a.Files, QStringList({"in.bmp", "out.bmp"}));
    EXPECT_EQ(a.Format.value(), 1);
    EXPECT_EQ(a.Frame, 2);
    EXPECT_EQ(a.Options.value("Rle"), "1");

    ASSERT_TRUE(vmcli::ParseArguments({"apply", "a.bmp", "b.bmp", "Posterize", "Levels=3", "--then", "Invert",
                                       "--mode", "add", "--select", "rect:0,0,4,4", "--feather", "3"},
                                      a, error));
    ASSERT_EQ(a.Operations.size(), 2);
    EXPECT_EQ(a.Operations[0].Operation, "Posterize");
    EXPECT_EQ(a.Operations[0].Params.value("Levels"), "3");
    EXPECT_EQ(a.Operations[1].Operation, "Invert");
    EXPECT_EQ(a.SelectSteps.size(), 1);
    EXPECT_EQ(a.SelectSteps[0].first, "add");
    EXPECT_EQ(a.Selection.Feather.value(), 3);

    // A parameter after --then belongs to that operation.
    ASSERT_TRUE(vmcli::ParseArguments({"apply", "a", "b", "Invert", "--then", "Threshold", "Level=9"}, a, error));
    EXPECT_TRUE(a.Operations[0].Params.isEmpty());
    EXPECT_EQ(a.Operations[1].Params.value("Level"), "9");

    for (const QStringList& bad : {QStringList{}, QStringList{"paint"}, QStringList{"info"},
                                   QStringList{"convert", "a"}, QStringList{"convert", "a", "b", "--frame", "-1"},
                                   QStringList{"convert", "a", "b", "--option", "=1"},
                                   QStringList{"select", "a", "b", "--mode", "xor"},
                                   QStringList{"select", "a", "b", "--antialias", "2"},
                                   QStringList{"list", "--bogus"}}) {
        error.clear();
        EXPECT_FALSE(vmcli::ParseArguments(bad, a, error)) << bad.join(' ').toStdString();
        EXPECT_FALSE(error.isEmpty());
    }
}

TEST(CliTool, InfoReportsTheFile) {
    const QString bmp = Sample("info.bmp", 8);
    const CliResult r = Cli({"info", bmp});
    ASSERT_EQ(r.Code, 0) << r.Err.toStdString();
    EXPECT_TRUE(r.Out.startsWith("Width: 13\nHeight: 7\nPixelFormat: 0x30803\nRawImageFormat: 1\n"
                                 "RawPixelFormat: 0x30803\nResolution: 95.98983"))
        << r.Out.toStdString();
    EXPECT_TRUE(r.Out.endsWith("\nPaletteCount: 256\nFrameCount: 1\n")) << r.Out.toStdString();
}

TEST(CliTool, RefusesWhatNoParserAcceptsAndWritesNothing) {
    const QString junk = QDir(vmtest::TempDir()).filePath("junk.bmp");
    QFile f(junk);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly) && f.write("this is not a picture at all") > 0);
    f.close();
    const QString out = QDir(vmtest::TempDir()).filePath("never.bmp");
    const CliResult r = Cli({"convert", junk, out});
    EXPECT_EQ(r.Code, 1);
    EXPECT_TRUE(r.Err.contains(QStringLiteral("无法完成请求，因为他不是所指类型的文档.")));
    EXPECT_FALSE(QFileInfo::exists(out));
    EXPECT_EQ(Cli({"info", junk}).Code, 1);
    EXPECT_EQ(Cli({"info", junk + ".missing"}).Code, 1);
}

TEST(CliTool, WrongUsageIsTwoAndTouchesNothing) {
    const QString bmp = Sample("usage.bmp", 24);
    const QString out = QDir(vmtest::TempDir()).filePath("usage-out.bmp");
    EXPECT_EQ(Cli({}).Code, 2);
    EXPECT_EQ(Cli({"convert", bmp, out, "--option", "Nonsense=1"}).Code, 2);
    EXPECT_EQ(Cli({"convert", bmp, QDir(vmtest::TempDir()).filePath("x.unknownext")}).Code, 2);
    EXPECT_FALSE(QFileInfo::exists(out));
}

TEST(CliTool, ConvertPassesTheBmpOptionsAndKeepsThePixels) {
    const QString src = Sample(QStringLiteral("src8.bmp"), 8);
    vm::CImage original;
    ASSERT_TRUE(original.LoadPictureFromFile(src));
    for (const QString option : {"", "FlipRow=1", "FileSystem=1", "Rle=1"}) {
        const QString out = QDir(vmtest::TempDir()).filePath("out-" + option.left(3) + ".bmp");
        QStringList args = {"convert", src, out};
        if (!option.isEmpty()) args << "--option" << option;
        const CliResult r = Cli(args);
        ASSERT_EQ(r.Code, 0) << r.Err.toStdString();
        vm::CImage back;
        ASSERT_TRUE(back.LoadPictureFromFile(out)) << out.toStdString();
        EXPECT_EQ(vmtest::CountDifferences(vmtest::ToRgba(original), vmtest::ToRgba(back)), 0)
            << option.toStdString();
        EXPECT_EQ(back.BmpFlipRow, option.startsWith("Flip")) << option.toStdString();
        EXPECT_EQ(back.BmpFileSystem, option.startsWith("File") ? 1 : 0) << option.toStdString();
        EXPECT_EQ(back.RleCompress, option.startsWith("Rle")) << option.toStdString();
    }
}

TEST(CliTool, ApplyAndListSpeakChineseAndKeepTheKeys) {
    const QString bmp = Sample("apply.bmp", 24);
    const QString out = QDir(vmtest::TempDir()).filePath("apply-out.bmp");
    // Wrong values are named by their labels, unknown names by what was typed.
    CliResult r = Cli({"apply", bmp, out, "Convolute", "Divider=0"});
    EXPECT_EQ(r.Code, 2);
    EXPECT_TRUE(r.Err.contains(QStringLiteral("“自定义”命令的“缩放”"))) << r.Err.toStdString();
    EXPECT_FALSE(r.Err.contains("Divider")) << r.Err.toStdString();
    r = Cli({"apply", bmp, out, "NoSuchThing"});
    EXPECT_EQ(r.Code, 2);
    EXPECT_TRUE(r.Err.contains(QStringLiteral("没有名为“NoSuchThing”的操作"))) << r.Err.toStdString();
    // A row whose operation is still to come, and a format the row refuses.
    r = Cli({"apply", bmp, out, "Level"});
    EXPECT_EQ(r.Code, 1);
    EXPECT_TRUE(r.Err.contains(QStringLiteral("“色阶”命令在这个版本中还不能使用"))) << r.Err.toStdString();
    r = Cli({"apply", Sample("apply1.bmp", 1), out, "Invert"});
    EXPECT_EQ(r.Code, 1);
    EXPECT_TRUE(r.Err.contains(QStringLiteral("当前的图像模式不支持“反相”命令"))) << r.Err.toStdString();
    // An indexed picture inverts as a whole only.
    r = Cli({"apply", Sample("apply8.bmp", 8), out, "Invert", "--select", "rect:0,0,4,4"});
    EXPECT_EQ(r.Code, 1);
    EXPECT_TRUE(r.Err.contains(QStringLiteral("只能作用于整幅图像"))) << r.Err.toStdString();
    EXPECT_FALSE(QFileInfo::exists(out));

    r = Cli({"list"});
    ASSERT_EQ(r.Code, 0);
    EXPECT_TRUE(
        r.Out.contains(QStringLiteral("GuassBlur（GaussianBlur）高斯模糊 [模糊]\n  Radius=1..250 默认 1"
                                      "（RGBA 32 图像上至 180）  半径（像素）\n")))
        << r.Out.toStdString();
    EXPECT_TRUE(r.Out.contains(QStringLiteral("Caustics（Caustics）流云飞袖 [纹理] 尚未实现\n")));
    EXPECT_FALSE(r.Out.contains("default")) << "no English left";
}
