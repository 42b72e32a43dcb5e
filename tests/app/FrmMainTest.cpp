// The main window as a user drives it: documents in slots and tabs, saving by
// family, closing with a question per unsaved document, the Edit commands,
// the enabling rules and the keyboard.
#include "app/FrmMain.h"
#include "adjust/PointOps.h"
#include "app/AppTestSupport.h"
#include "app/FrmMultiUse.h"
#include "app/FrmOperation.h"
#include "canvas/Canvas.h"
#include "core/AppSettings.h"
#include "core/MemoryGuard.h"
#include "core/MessageBox.h"
#include "core/Numeric.h"
#include "core/OperationSettings.h"
#include "core/SettingsStore.h"
#include "support/TestSupport.h"

#include <QAction>
#include <QClipboard>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QRegularExpression>
#include <QTabBar>
#include <QTest>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

using namespace vm;
using vmtest::Bytes;
using vmtest::Paste;

namespace {

class FrmMainTest : public ::testing::Test {
  protected:
    void SetUp() override {
        saved_ = Globals();
        Globals() = AppSettings();
        QGuiApplication::clipboard()->clear();
        // Each test starts from an empty settings store, whatever ran before it.
        QDir config(QString::fromLocal8Bit(qgetenv("XDG_CONFIG_HOME")));
        for (const QString& f : config.entryList(QDir::Files))
            config.remove(f);
        static int run = 0;
        dir_ = vmtest::TempDir() + QStringLiteral("/frm%1").arg(++run);
        QDir().mkpath(dir_);
    }
    void TearDown() override { Globals() = saved_; }

    // A picture written by our own writers.
    QString Write(const QString& name, CImage& image, int32_t format, const SaveOptions& o = SaveOptions()) {
        const QString path = dir_ + QLatin1Char('/') + name;
        EXPECT_TRUE(image.SavePictureToFile(path, format, o)) << name.toStdString();
        return path;
    }
    QString WriteRandom(const QString& name, int bits, int32_t format, unsigned seed = 1) {
        return Write(name, *vmtest::RandomImage(24, 16, bits, seed), format);
    }
    static QString CaptionOf(const FrmMain& w, const char* array, int index) {
        QAction* a = w.Entry(QString::fromLatin1(array), index);
        return a ? a->text() : QString();
    }
    static bool On(const FrmMain& w, const char* array, int index) {
        QAction* a = w.Entry(QString::fromLatin1(array), index);
        return a && a->isEnabled();
    }
    // The first entry of the filter menus that Test picks, as array and index.
    static std::pair<QString, int>
    FilterEntry(const std::function<bool(const QString&, const MenuItemSpec&, const Operation*)>& test) {
        for (const MenuArraySpec& a : MenuArrays()) {
            if (!FilterFamilyArrays().contains(a.Array) && a.Array != QLatin1String("EdgeDetection"))
                continue;
            for (size_t i = 0; i < a.Items.size(); ++i)
                if (test(a.Array, a.Items[i], FrmMain::FindOperationForEntry(a.Items[i])))
                    return {a.Array, static_cast<int>(i)};
        }
        return {QString(), -1};
    }

    AppSettings saved_;
    QString dir_;
    MessageRecorder recorder_;
};

} // namespace

// ------------------------------------------------------------------ documents

TEST_F(FrmMainTest, OpeningKeepsToTheLimitTheFreeSlotsAndTheFilesAlreadyOpen) {
    Globals().MaxOpenFileCount = 3;
    FrmMain w;
    QStringList files;
    for (int i = 0; i < 4; ++i)
        files << WriteRandom(QStringLiteral("p%1.png").arg(i), 24, RawPng, i);
    ASSERT_TRUE(w.OpenDocument(files[0]));
    // What is no picture, and what is not there, take no slot.
    QFile junk(dir_ + QStringLiteral("/junk.png"));
    ASSERT_TRUE(junk.open(QIODevice::WriteOnly));
    junk.write("this is no picture at all");
    junk.close();
    EXPECT_FALSE(w.OpenDocument(junk.fileName()));
    EXPECT_FALSE(w.OpenDocument(dir_ + QStringLiteral("/missing.png")));
    ASSERT_EQ(recorder_.Requests.size(), 2);
    EXPECT_EQ(recorder_.Requests[0].Text, QStringLiteral("无法完成请求，因为他不是所指类型的文档."));
    EXPECT_EQ(recorder_.Requests[0].Title, QStringLiteral("错误"));
    EXPECT_EQ(w.TabSlots(), (std::vector<int>{0, -1, -1}));
    EXPECT_EQ(w.CurrentSlot(), 0);
    EXPECT_TRUE(w.ActiveCanvas()->HasImage());

    // A file already open, also named relative to the working folder, only
    // comes up again: a change made to it is not lost to a second load.
    ASSERT_TRUE(w.OpenDocument(files[1]));
    Canvas* first = w.SlotCanvas(0);
    Invert(*first->Image());
    const QString previous = QDir::currentPath();
    QDir::setCurrent(dir_);
    EXPECT_TRUE(w.OpenDocument(QStringLiteral("p0.png")));
    QDir::setCurrent(previous);
    EXPECT_EQ(w.DocumentCount(), 2);
    EXPECT_EQ(w.TabDocument()->currentIndex(), 0);
    EXPECT_EQ(w.ActiveCanvas(), first);
    EXPECT_TRUE(first->GetUndoState());
    EXPECT_EQ(recorder_.Requests.size(), 2);

    // Full: opening, pasting and duplicating are refused alike.
    ASSERT_TRUE(w.OpenDocument(files[2]));
    EXPECT_EQ(w.TabSlots(), (std::vector<int>{0, 1, 2}));
    EXPECT_FALSE(w.OpenDocument(files[3]));
    Paste(w, QImage(4, 4, QImage::Format_RGB32));
    w.OnMenu(QStringLiteral("ImageS"), 7);
    ASSERT_EQ(recorder_.Requests.size(), 5);
    for (int i = 2; i < 5; ++i)
        EXPECT_EQ(recorder_.Requests[i].Text, QStringLiteral("无法同时打开更多的文档.")) << i;
    EXPECT_EQ(recorder_.Requests[2].Title, QStringLiteral("错误"));
    EXPECT_EQ(w.DocumentCount(), 3);

    // A closed slot is the next one used; its tab goes to the end.
    w.TabDocument()->setCurrentIndex(1);
    int answer = -1;
    w.CloseDocument(1, answer);
    EXPECT_EQ(w.TabSlots(), (std::vector<int>{0, -1, 2}));
    ASSERT_TRUE(w.OpenDocument(files[3]));
    EXPECT_EQ(w.CurrentSlot(), 1);
    EXPECT_EQ(w.TabDocument()->tabText(2), QStringLiteral("p3.png"));
}

TEST_F(FrmMainTest, FilesOpenInOrderTheRecentListFollowsAndClosingBringsUpANeighbour) {
    Globals().MaxHistoryListCount = 2;
    FrmMain w;
    const QString a = WriteRandom(QStringLiteral("a.png"), 24, RawPng, 1);
    const QString b = WriteRandom(QStringLiteral("b.png"), 24, RawPng, 2);
    const QString c = WriteRandom(QStringLiteral("c.png"), 24, RawPng, 3);
    w.OpenFiles({a, b, c});
    ASSERT_EQ(w.DocumentCount(), 3);
    EXPECT_EQ(w.TabDocument()->tabText(0), QStringLiteral("a.png"));
    EXPECT_EQ(w.TabDocument()->tabText(2), QStringLiteral("c.png"));
    EXPECT_EQ(Globals().HistoryFiles, (QStringList{c, b}));
    EXPECT_TRUE(w.RecentFileEntry(0)->text().endsWith(c));
    EXPECT_TRUE(w.RecentFileEntry(1)->isVisible());
    EXPECT_FALSE(w.RecentFileEntry(2)->isVisible());

    // The middle one closes: its left neighbour comes up.
    w.TabDocument()->setCurrentIndex(1);
    w.OnMenu(QStringLiteral("File"), 10);
    EXPECT_EQ(w.DocumentCount(), 2);
    EXPECT_EQ(w.TabDocument()->currentIndex(), 0);
    EXPECT_EQ(w.ActiveCanvas()->Image()->FileName, a);
    // Opened again, a file moves to the head; the case of the name does not matter.
    Globals().HistoryFiles = QStringList{c, b.toUpper()};
    ASSERT_TRUE(w.OpenDocument(b));
    EXPECT_EQ(Globals().HistoryFiles, (QStringList{b, c}));
    // The first one closes: the next comes up (the tabs are a, c, b).
    w.TabDocument()->setCurrentIndex(0);
    w.OnMenu(QStringLiteral("File"), 10);
    EXPECT_EQ(w.ActiveCanvas()->Image()->FileName, c);
    w.OnMenu(QStringLiteral("File"), 10);
    w.OnMenu(QStringLiteral("File"), 10);
    EXPECT_EQ(w.ActiveCanvas(), nullptr);
    EXPECT_EQ(w.CurrentSlot(), 0);
    EXPECT_TRUE(On(w, "File", 0));
    EXPECT_FALSE(On(w, "File", 4));

    // An entry whose file has gone says so.
    QFile::remove(c);
    w.OnMenu(QStringLiteral("HistoryFileList"), 1);
    ASSERT_EQ(recorder_.Requests.size(), 1);
    EXPECT_EQ(recorder_.LastText(), QStringLiteral("无法打开所选的项目，因为找不到该文件."));
    w.ClearHistoryEntry()->trigger();
    EXPECT_TRUE(Globals().HistoryFiles.isEmpty());
    EXPECT_FALSE(w.RecentFileEntry(0)->isVisible());
}

// ------------------------------------------------------------------ saving

TEST_F(FrmMainTest, SaveKeepsTheFamilyTheFileCameFrom) {
    FrmMain w;
    int asked = 0;
    w.AskSaveAsFileName = [&](auto&&...) { return ++asked, false; };
    const QString gif = Write(QStringLiteral("pal.gif"), *vmtest::RandomImage(20, 10, 8, 4), RawGif);
    for (const QString& file : {gif, WriteRandom(QStringLiteral("rgb.png"), 24, RawPng, 5)}) {
        ASSERT_TRUE(w.OpenDocument(file));
        Canvas* c = w.ActiveCanvas();
        const int32_t family = c->Image()->RawImageFormat;
        EXPECT_FALSE(On(w, "File", 4));
        ASSERT_TRUE(Invert(*c->Image()));
        EXPECT_TRUE(On(w, "File", 4));
        const QByteArray changed = Bytes(*c->Image()->GetRGB32Image());
        w.OnMenu(QStringLiteral("File"), 4);
        EXPECT_FALSE(c->ImageChanged);
        EXPECT_FALSE(On(w, "File", 4));
        CImage back;
        ASSERT_TRUE(back.LoadPictureFromFile(file));
        EXPECT_EQ(back.RawImageFormat, family);
        EXPECT_EQ(Bytes(*back.GetRGB32Image()), changed);
    }
    EXPECT_EQ(asked, 0);
    EXPECT_TRUE(recorder_.Requests.isEmpty());

    // A grey JPEG is written in colour, after saying so.
    SaveOptions o;
    o.Set(QStringLiteral("Quality"), 90);
    const QString jpeg = Write(QStringLiteral("grey.jpg"), *vmtest::Grey(16, 16), RawJpeg, o);
    ASSERT_TRUE(w.OpenDocument(jpeg));
    ASSERT_EQ(w.ActiveCanvas()->Image()->PixelFormat, PixelFormat8bppGray);
    ASSERT_TRUE(Invert(*w.ActiveCanvas()->Image()));
    ASSERT_TRUE(w.Save());
    ASSERT_EQ(recorder_.Requests.size(), 1);
    EXPECT_EQ(recorder_.LastText(), QStringLiteral("很抱歉，无法保留原始的灰度格式，将转换为24位JPG图像."));
    CImage back;
    ASSERT_TRUE(back.LoadPictureFromFile(jpeg));
    EXPECT_GT(back.Row(0)[0], 200); // black before the inversion
}

TEST_F(FrmMainTest, FamiliesWithoutAWriterGoToSaveAsWithTheirMessage) {
    FrmMain w;
    Canvas* c = Paste(w, QImage(5, 5, QImage::Format_RGB32));
    c->Image()->RawImageFormat = RawPsd; // as a PSD would have come in
    c->Image()->RawPixelFormat = c->Image()->PixelFormat;
    Invert(*c->Image());
    int asked = 0;
    w.AskSaveAsFileName = [&](auto&&...) { return ++asked, false; };
    recorder_.NextCheckState = true;
    EXPECT_FALSE(w.Save());
    ASSERT_EQ(recorder_.Requests.size(), 1);
    const MessageRequest& m = recorder_.Requests[0];
    EXPECT_EQ(m.Text,
              QStringLiteral("很抱歉，WMF、EMF、PSD、DCM、PCD等图像无法保存为原始格式，请选择其他格式保存."));
    EXPECT_EQ(m.Title, QStringLiteral("提示"));
    EXPECT_EQ(m.CheckText, QStringLiteral("不再提示"));
    EXPECT_TRUE(Globals().ShowPromptSaveNotSupported);
    EXPECT_EQ(asked, 1);
    // Told not to ask again: straight to Save As.
    EXPECT_FALSE(w.Save());
    EXPECT_EQ(recorder_.Requests.size(), 1);
    EXPECT_EQ(asked, 2);
    // A picture no longer in the format it was opened in goes there too.
    c->Image()->RawImageFormat = RawPng;
    c->Image()->RawPixelFormat = PixelFormat8bppGray;
    EXPECT_FALSE(w.Save());
    EXPECT_EQ(asked, 3);

    // Yes to the closing question with no save made keeps the document.
    recorder_.Answers = {ResultYes};
    int answer = 0;
    w.CloseDocument(w.CurrentSlot(), answer);
    EXPECT_EQ(answer, ResultCancel);
    EXPECT_EQ(w.DocumentCount(), 1);
    EXPECT_EQ(recorder_.LastText(), QStringLiteral("要在关闭之前存储对Osier VelluMark文档未标题的更改吗？"));
}

TEST_F(FrmMainTest, SaveAsOffersTheFamiliesThatHoldTheFormat) {
    FrmMain w;
    ASSERT_NE(Paste(w, vmtest::Solid(6, 4, QColor(200, 100, 50, 90), QImage::Format_ARGB32)), nullptr);
    ASSERT_EQ(w.ActiveCanvas()->Image()->PixelFormat, PixelFormat32bppARGB);

    QList<FileFilter> offered;
    int preselected = -1, options = 0;
    QString answerFile = dir_ + QStringLiteral("/saved");
    int answerRow = 2; // Png
    w.AskSaveAsFileName = [&](const QList<FileFilter>& filters, int selected, const QString&, QString& file,
                              int& chosen) {
        offered = filters;
        preselected = selected;
        file = answerFile;
        chosen = answerRow;
        return true;
    };
    w.AskSaveOptions = [&](int32_t, const CImage&, SaveOptions& o) {
        ++options;
        o.Set(QStringLiteral("Quality"), 40);
        return true;
    };
    // The pasted picture has no family: Save goes to Save As.
    ASSERT_TRUE(w.Save());
    QStringList families;
    for (const FileFilter& f : offered)
        families << f.Text;
    EXPECT_EQ(families, (QStringList{"Bmp (*.bmp;*.rle;*.dib)", "Jpeg (*.jpg;*.jpeg;*.jpe;*.jfif)",
                                     "Png (*.png)", "Tiff (*.tif;*.tiff)"}));
    EXPECT_EQ(preselected, 0);
    EXPECT_EQ(options, 0) << "PNG has no options to ask for";
    const QString png = answerFile + QStringLiteral(".png");
    EXPECT_EQ(w.ActiveCanvas()->Image()->FileName, png);
    EXPECT_EQ(w.TabDocument()->tabText(0), QStringLiteral("saved.png"));
    EXPECT_FALSE(w.ActiveCanvas()->ImageChanged);
    CImage back;
    ASSERT_TRUE(back.LoadPictureFromFile(png));
    EXPECT_EQ(back.PixelFormat, PixelFormat32bppARGB);
    EXPECT_EQ(back.Row(0)[3], 90);

    // JPEG asks for its options; a name with the family's extension keeps it.
    answerFile = dir_ + QStringLiteral("/photo.JPEG");
    answerRow = 1;
    ASSERT_TRUE(w.SaveAs());
    EXPECT_EQ(options, 1);
    EXPECT_TRUE(QFile::exists(answerFile));
    EXPECT_EQ(w.ActiveCanvas()->Image()->FileName, answerFile);

    // The row of the picture's own family is preselected; GIF cannot hold colour.
    const QString tif = WriteRandom(QStringLiteral("t.tif"), 24, RawTiff);
    ASSERT_TRUE(w.OpenDocument(tif));
    w.AskSaveAsFileName = [&](const QList<FileFilter>& filters, int selected, const QString& suggested,
                              QString&, int&) {
        offered = filters;
        preselected = selected;
        EXPECT_EQ(suggested, tif);
        return false;
    };
    EXPECT_FALSE(w.SaveAs());
    EXPECT_EQ(offered.value(preselected).Format, RawTiff);
    EXPECT_TRUE(
        std::none_of(offered.begin(), offered.end(), [](const FileFilter& f) { return f.Format == RawGif; }));

    // A save that fails says so and changes nothing.
    Invert(*w.ActiveCanvas()->Image());
    w.AskSaveAsFileName = [&](const QList<FileFilter>&, int, const QString&, QString& out, int& chosen) {
        out = dir_ + QStringLiteral("/no/such/folder/x.png");
        chosen = 2;
        return true;
    };
    EXPECT_FALSE(w.SaveAs());
    ASSERT_EQ(recorder_.Requests.size(), 1);
    EXPECT_TRUE(recorder_.LastText().startsWith(QStringLiteral("无法保存文件")));
    EXPECT_EQ(w.ActiveCanvas()->Image()->FileName, tif);
    EXPECT_TRUE(w.ActiveCanvas()->ImageChanged);
}

TEST_F(FrmMainTest, ExitAsksOncePerUnsavedDocumentAndCancelKeepsRunning) {
    const QString a = WriteRandom(QStringLiteral("a.png"), 24, RawPng, 1);
    const QString b = WriteRandom(QStringLiteral("b.png"), 24, RawPng, 2);
    const QString clean = WriteRandom(QStringLiteral("clean.png"), 24, RawPng, 3);
    CImage original, bBefore;
    ASSERT_TRUE(original.LoadPictureFromFile(a));
    ASSERT_TRUE(bBefore.LoadPictureFromFile(b));
    {
        FrmMain w;
        w.show();
        w.OpenFiles({a, clean, b});
        Invert(*w.SlotCanvas(0)->Image());
        Invert(*w.SlotCanvas(2)->Image());
        recorder_.Answers = {ResultCancel};
        EXPECT_FALSE(w.close());
        EXPECT_TRUE(w.isVisible());
        ASSERT_EQ(recorder_.Requests.size(), 1);
        EXPECT_EQ(recorder_.LastText(),
                  QStringLiteral("要在关闭之前存储对Osier VelluMark文档b.png的更改吗？"));
        EXPECT_EQ(recorder_.Requests[0].Buttons, ButtonsYesNoCancel);
        EXPECT_EQ(w.DocumentCount(), 3);

        // No for b, yes for a: one question each, none for the clean one.
        recorder_.Answers = {ResultNo, ResultYes};
        EXPECT_TRUE(w.close());
        EXPECT_EQ(recorder_.Requests.size(), 3);
        EXPECT_EQ(recorder_.LastText(),
                  QStringLiteral("要在关闭之前存储对Osier VelluMark文档a.png的更改吗？"));
        EXPECT_EQ(w.DocumentCount(), 0);
    }
    CImage savedA, untouchedB;
    ASSERT_TRUE(savedA.LoadPictureFromFile(a));
    ASSERT_TRUE(untouchedB.LoadPictureFromFile(b));
    EXPECT_EQ(savedA.Row(0)[0], 255 - original.Row(0)[0]);
    EXPECT_EQ(Bytes(untouchedB), Bytes(bBefore));
}

// ------------------------------------------------------------------ Edit, Image, Selection, View

TEST_F(FrmMainTest, CopyAndPasteCarryTheSelectionsAlpha) {
    FrmMain w;
    QImage picture = vmtest::Solid(10, 8, QColor(30, 60, 90, 200), QImage::Format_ARGB32);
    picture.setPixelColor(3, 3, QColor(1, 2, 3, 100));
    Canvas* source = Paste(w, picture);
    ASSERT_NE(source, nullptr);
    EXPECT_EQ(w.TabDocument()->tabText(0), QStringLiteral("未标题"));
    EXPECT_EQ(source->Image()->FileName, QStringLiteral("未标题"));
    EXPECT_FALSE(On(w, "Edit", 5)) << "nothing selected yet";

    ASSERT_TRUE(source->Selection()->AddRectangle(2, 2, 6, 5));
    EXPECT_TRUE(On(w, "Edit", 5));
    w.OnMenu(QStringLiteral("Edit"), 5);
    const QImage copied = QGuiApplication::clipboard()->image();
    ASSERT_EQ(copied.size(), QSize(4, 3));
    EXPECT_EQ(copied.pixelColor(1, 1), QColor(1, 2, 3, 100));
    EXPECT_EQ(copied.pixelColor(0, 0), QColor(30, 60, 90, 200));

    w.OnMenu(QStringLiteral("Edit"), 6);
    ASSERT_EQ(w.DocumentCount(), 2);
    Canvas* pasted = w.ActiveCanvas();
    ASSERT_NE(pasted, source);
    EXPECT_EQ(pasted->Image()->PixelFormat, PixelFormat32bppARGB);
    EXPECT_EQ(pasted->CanvasWidth(), 4);
    const uint8_t* p = pasted->Image()->Row(1) + 4;
    EXPECT_EQ(p[0], 3);
    EXPECT_EQ(p[2], 1);
    EXPECT_EQ(p[3], 100);
    EXPECT_FALSE(pasted->ImageChanged);
}

TEST_F(FrmMainTest, CutClearsAndDeleteDoesTheSame) {
    Globals().SystemBackColor = MakeColorRef(0, 0, 255);
    FrmMain w;
    w.show();
    Canvas* c = Paste(w, vmtest::Solid(10, 8, QColor(200, 200, 200)));
    c->Selection()->AddRectangle(0, 0, 2, 2);
    w.OnMenu(QStringLiteral("Edit"), 4);
    EXPECT_EQ(QGuiApplication::clipboard()->image().size(), QSize(2, 2));
    const uint8_t* p = c->Image()->Row(1);
    EXPECT_EQ(p[3], 255); // blue byte of pixel 1
    EXPECT_EQ(p[5], 0);
    EXPECT_EQ(c->StatusText().left(3), QStringLiteral("清除:"));
    EXPECT_EQ(c->Image()->Row(2)[0], 200);

    c->Selection()->AddRectangle(5, 5, 7, 7);
    c->setFocus();
    QTest::keyClick(c, Qt::Key_Delete);
    EXPECT_EQ(c->Image()->Row(6)[15], 255);
    EXPECT_EQ(c->Image()->Row(6)[17], 0);
    // Without a made selection the key does nothing, as the menu entry is off.
    c->CancelSelect();
    const QByteArray before = Bytes(*c->Image());
    QTest::keyClick(c, Qt::Key_Delete);
    EXPECT_EQ(Bytes(*c->Image()), before);
}

TEST_F(FrmMainTest, FillUsesTheChosenColourAndOpacity) {
    Globals().SystemForeColor = MakeColorRef(255, 0, 0);
    FrmMain w;
    Canvas* c = Paste(w, QImage(6, 6, QImage::Format_RGB888));
    c->Image()->ClearImage();
    FillChoice asked;
    w.AskFill = [&](FillChoice& choice) {
        asked = choice;
        choice.Content = 0;
        choice.Opacity = 50;
        return true;
    };
    w.OnMenu(QStringLiteral("Edit"), 9);
    EXPECT_EQ(asked.Opacity, 100);
    EXPECT_EQ(c->Image()->Row(0)[2], 127);
    EXPECT_EQ(c->Image()->Row(0)[0], 0);
    EXPECT_EQ(c->GetHistory().HistoryPos, 1);
    // Cancelled: nothing happens.
    w.AskFill = [](FillChoice&) { return false; };
    w.OnMenu(QStringLiteral("Edit"), 9);
    EXPECT_EQ(c->GetHistory().HistoryPos, 1);
}

TEST_F(FrmMainTest, PurgeAndDuplicate) {
    FrmMain w;
    ASSERT_TRUE(w.OpenDocument(WriteRandom(QStringLiteral("d.png"), 24, RawPng)));
    Canvas* source = w.ActiveCanvas();
    Invert(*source->Image());
    source->Selection()->AddRectangle(1, 1, 3, 3);
    EXPECT_TRUE(On(w, "Edit", 12));
    w.OnMenu(QStringLiteral("ImageS"), 7);
    ASSERT_EQ(w.DocumentCount(), 2);
    EXPECT_EQ(w.TabDocument()->tabText(1), QStringLiteral("d.png"));
    Canvas* copy = w.ActiveCanvas();
    EXPECT_EQ(Bytes(*copy->Image()), Bytes(*source->Image()));
    EXPECT_FALSE(copy->Selection()->UseDefaultSetting());
    EXPECT_FALSE(copy->GetUndoState());
    EXPECT_EQ(copy->Image()->RawImageFormat, 0);
    // The copy is a picture of its own.
    const QByteArray sourceBytes = Bytes(*source->Image());
    Invert(*copy->Image());
    EXPECT_EQ(Bytes(*source->Image()), sourceBytes);
    w.TabDocument()->setCurrentIndex(0);
    w.OnMenu(QStringLiteral("Purge"), 1);
    EXPECT_FALSE(source->GetUndoState());
    EXPECT_FALSE(On(w, "Edit", 0));
}

TEST_F(FrmMainTest, SelectionAndViewCommands) {
    FrmMain w;
    w.show();
    QImage picture = vmtest::Solid(8, 4, QColor(10, 10, 10));
    for (int y = 0; y < 4; ++y)
        picture.setPixelColor(7, y, QColor(250, 250, 250));
    Canvas* c = Paste(w, picture);
    EXPECT_FALSE(On(w, "Selection", 1));
    w.OnMenu(QStringLiteral("Selection"), 0);
    EXPECT_FALSE(c->Selection()->UseDefaultSetting());
    EXPECT_TRUE(On(w, "Selection", 2));
    w.OnMenu(QStringLiteral("Selection"), 1);
    EXPECT_TRUE(c->Selection()->UseDefaultSetting());
    c->Selection()->AddRectangle(7, 0, 8, 4);
    w.OnMenu(QStringLiteral("Selection"), 2);
    EXPECT_EQ(c->Selection()->Row(0)[0], 255);
    EXPECT_EQ(c->Selection()->Row(0)[7], 0);
    // Similar to the dark pixels that are selected: all dark ones, not the light column.
    w.OnMenu(QStringLiteral("Selection"), 11);
    EXPECT_EQ(c->Selection()->Row(3)[2], 255);
    EXPECT_EQ(c->Selection()->Row(3)[7], 0);
    // Each was a step of its own.
    EXPECT_EQ(c->GetHistory().HistoryPos, 5);

    // Zoom in and out, the ruler, fit to the screen and actual pixels.
    w.OnMenu(QStringLiteral("View"), 0);
    EXPECT_EQ(c->ZoomFactor(), 2.0);
    w.OnMenu(QStringLiteral("View"), 1);
    EXPECT_EQ(c->ZoomFactor(), 1.0);
    EXPECT_TRUE(w.Entry(QStringLiteral("View"), 6)->isChecked());
    w.OnMenu(QStringLiteral("View"), 6);
    EXPECT_FALSE(c->ShowRuler());
    EXPECT_FALSE(w.Entry(QStringLiteral("View"), 6)->isChecked());
}

// ------------------------------------------------------------------ operations

TEST_F(FrmMainTest, OperationsRunFromTheirEntriesAsOneStepAndTheirDialogPreviews) {
    FrmMain w;
    Canvas* c = Paste(w, vmtest::Solid(24, 6, QColor(100, 100, 100)));
    const QByteArray original = Bytes(*c->Image());
    w.OnMenu(QStringLiteral("Adjust"), 13);
    EXPECT_EQ(c->GetHistory().HistoryPos, 1);
    EXPECT_TRUE(c->StatusText().startsWith(QStringLiteral("反相:")));
    // The parameter dialog hands its result over once.
    w.RunOperationDialog = [](const Operation& op, Canvas& target) {
        FrmOperation dialog(op, target);
        EXPECT_TRUE(dialog.SetParam(QStringLiteral("Levels"), QStringLiteral("2")));
        dialog.accept();
        return true;
    };
    w.OnMenu(QStringLiteral("Adjust"), 14);
    EXPECT_EQ(c->GetHistory().HistoryPos, 2);
    EXPECT_EQ(c->Image()->Row(5)[0], 255); // 155 after the inversion
    w.OnMenu(QStringLiteral("Edit"), 0);
    w.OnMenu(QStringLiteral("Edit"), 0);
    EXPECT_EQ(Bytes(*c->Image()), original);
    EXPECT_TRUE(On(w, "Edit", 1));
    EXPECT_TRUE(recorder_.Requests.isEmpty());
    // Adjustments do not count as filters.
    EXPECT_TRUE(w.LastFilterName.isEmpty());
    EXPECT_FALSE(On(w, "Repeat", 0));

    // The dialog previews on the document; Cancel puts it back.
    const Operation* threshold = FindOperation(QStringLiteral("Threshold"));
    ASSERT_NE(threshold, nullptr);
    {
        FrmOperation dialog(*threshold, *c);
        dialog.SetParam(QStringLiteral("Level"), QStringLiteral("50"));
        dialog.Refresh();
        EXPECT_EQ(dialog.Preview()->Row(0)[0], 255);
        EXPECT_EQ(c->Buffer().pixelColor(c->ShowLeft(), c->ShowTop()), QColor(255, 255, 255));
        dialog.reject();
    }
    EXPECT_EQ(Bytes(*c->Image()), original);
    EXPECT_EQ(c->GetHistory().HistoryPos, 0);
    EXPECT_EQ(c->Buffer().pixelColor(c->ShowLeft(), c->ShowTop()), QColor(100, 100, 100));
    // Stored values come back held to the slider's range.
    SaveSetting(SettingsRoot, threshold->SettingsSection(), QStringLiteral("Level"), QStringLiteral("999"));
    FrmOperation reopened(*threshold, *c);
    EXPECT_EQ(reopened.CurrentParams().Int(QStringLiteral("Level")), 255);
    reopened.reject();
}

TEST_F(FrmMainTest, EntriesWithoutAnOperationSaySoAndBlankOnesStaySilent) {
    FrmMain w;
    ASSERT_TRUE(w.OpenDocument(WriteRandom(QStringLiteral("n.png"), 24, RawPng)));
    // The first filter or analysis entry whose operation is not built yet.
    const auto [array, index] =
        FilterEntry([](const QString&, const MenuItemSpec& item, const Operation* op) {
            return !item.IsSeparator() && !item.HasNoCommand() && item.Submenu.isEmpty() && !(op && op->Run);
        });
    if (index >= 0) {
        w.OnMenu(array, index);
        ASSERT_EQ(recorder_.Requests.size(), 1);
        const QString name = CommandNameOfCaption(vm::CaptionOf(*FindMenuItem(array, index)));
        EXPECT_TRUE(recorder_.LastText().contains(QStringLiteral("“") + name + QStringLiteral("”")))
            << recorder_.LastText().toStdString();
        recorder_.Requests.clear();
    }
    w.OnMenu(QStringLiteral("Adjust"), 20); // "颜色替换(&R)... "
    w.OnMenu(QStringLiteral("File"), 7);    // "打印(&P)... "
    w.OnMenu(QStringLiteral("Edit"), 10);   // "描边(&S)... "
    w.OnMenu(QStringLiteral("Adjust"), 7);  // a separator
    EXPECT_TRUE(recorder_.Requests.isEmpty());
    EXPECT_EQ(w.ActiveCanvas()->GetHistory().HistoryPos, 0);
}

TEST_F(FrmMainTest, FiltersRunFromTheirEntriesAndTheRepeatFollowsTheDialogsTitle) {
    FrmMain w;
    ASSERT_TRUE(w.OpenDocument(WriteRandom(QStringLiteral("f.png"), 24, RawPng)));
    Canvas* c = w.ActiveCanvas();
    EXPECT_FALSE(On(w, "Repeat", 0));
    EXPECT_TRUE(CaptionOf(w, "Repeat", 0).startsWith(QStringLiteral("上次滤镜操作")));
    int adjustDialogs = 0;
    w.RunOperationDialog = [&](const Operation&, Canvas&) { return ++adjustDialogs, false; };
    QStringList shown;
    w.RunFilterDialog = [&](const Operation& op, Canvas& target) {
        shown << op.Key;
        return op.Run(*target.Image(), op.WithDefaults(Params()));
    };
    auto entryOf = [&](const char* key) {
        return FilterEntry([key](const QString& array, const MenuItemSpec&, const Operation* op) {
            return FilterFamilyArrays().contains(array) && op && op->Key == QLatin1String(key);
        });
    };
    const auto [blur, gauss] = entryOf("GuassBlur");
    const auto [other, min] = entryOf("MinFilter");
    ASSERT_GE(gauss, 0);
    ASSERT_GE(min, 0);
    w.OnMenu(blur, gauss);
    EXPECT_EQ(w.LastFilterName, QStringLiteral("高斯模糊"));
    // The minimum filter's dialog says "最大值", and the repeat follows that name.
    w.OnMenu(other, min);
    EXPECT_EQ(shown, QStringList({QStringLiteral("GuassBlur"), QStringLiteral("MinFilter")}));
    EXPECT_EQ(adjustDialogs, 0);
    EXPECT_EQ(w.LastFilterName, QStringLiteral("最大值"));
    EXPECT_TRUE(CaptionOf(w, "Repeat", 0).startsWith(QStringLiteral("最大值")));
    EXPECT_EQ(c->GetHistory().HistoryPos, 2);
    EXPECT_TRUE(On(w, "Repeat", 0));
    std::unique_ptr<CImage> expected = c->Image()->CloneImage();
    EXPECT_TRUE(w.TranslateAccelerator(QKeyCombination(Qt::ControlModifier, Qt::Key_F)));
    EXPECT_EQ(c->GetHistory().HistoryPos, 3);
    const Operation* max = FindOperation(QStringLiteral("MaxFilter"));
    ASSERT_NE(max, nullptr);
    ASSERT_TRUE(max->Run(*expected, ReadRepeatParams(*max, *expected)));
    EXPECT_EQ(Bytes(*c->Image()), Bytes(*expected));
    // A cancelled dialog leaves the name as it was.
    w.RunFilterDialog = [](const Operation&, Canvas&) { return false; };
    w.OnMenu(blur, gauss);
    EXPECT_EQ(w.LastFilterName, QStringLiteral("最大值"));
    // A picture that filters cannot take turns the repeat off.
    ASSERT_TRUE(w.OpenDocument(WriteRandom(QStringLiteral("r1.bmp"), 1, RawBmp)));
    EXPECT_FALSE(On(w, "Repeat", 0));
}

TEST_F(FrmMainTest, ACommandShortOfMemorySaysSoAndTheWindowGoesOn) {
    FrmMain w;
    w.show();
    Canvas* c = Paste(w, vmtest::Solid(8, 6, QColor(10, 20, 30)));
    ASSERT_NE(c, nullptr);
    const QByteArray before = Bytes(*c->Image());
    w.RunOperationDialog = [](const Operation&, Canvas&) -> bool { throw std::bad_alloc(); };
    w.OnMenu(QStringLiteral("Adjust"), 14); // 色调分离, through its dialog
    ASSERT_EQ(recorder_.Requests.size(), 1);
    EXPECT_EQ(recorder_.LastText(), OutOfMemoryMessage());
    EXPECT_TRUE(w.isVisible());
    EXPECT_EQ(Bytes(*c->Image()), before);
    EXPECT_EQ(c->GetHistory().HistoryPos, 0);
    // The window still runs commands afterwards, by key as by entry.
    EXPECT_TRUE(w.RunCommand(QStringLiteral("Invert")));
    EXPECT_EQ(c->GetHistory().HistoryPos, 1);
    EXPECT_FALSE(w.RunCommand(QStringLiteral("NoSuchCommand")));
    // The same at the key of the fill dialog, which is not a generic one.
    w.AskFill = [](FillChoice&) -> bool { throw std::bad_alloc(); };
    w.TranslateAccelerator(QKeyCombination(Qt::ControlModifier, Qt::Key_F5));
    EXPECT_EQ(recorder_.Requests.size(), 2);
    EXPECT_EQ(recorder_.LastText(), OutOfMemoryMessage());
    EXPECT_EQ(w.DocumentCount(), 1);
}

// ------------------------------------------------------------------ enabling rules

TEST_F(FrmMainTest, CatalogueEntriesShowTheirRowAndRunByItsKey) {
    // Every entry that names no caption of its own is a row, shows the row's
    // title, and reaches the same window entry by its key.
    FrmMain w;
    int rows = 0;
    for (const MenuArraySpec& a : MenuArrays())
        for (size_t i = 0; i < a.Items.size(); ++i) {
            const MenuItemSpec& item = a.Items[i];
            if (item.IsSeparator() || !item.Caption.isEmpty()) continue;
            ++rows;
            const Operation* op = FindOperation(item.Key);
            ASSERT_NE(op, nullptr) << a.Array.toStdString() << " " << i;
            EXPECT_TRUE(
                CaptionOf(w, a.Array.toLatin1().constData(), static_cast<int>(i)).startsWith(op->Title))
                << item.Key.toStdString();
            EXPECT_EQ(w.EntryOf(item.Key), w.Entry(a.Array, static_cast<int>(i))) << item.Key.toStdString();
        }
    EXPECT_GT(rows, 180);
}

TEST_F(FrmMainTest, EnablingRulesFollowTheFormatAndTheSelection) {
    // Per format, entries named as array and index: those on with everything
    // selected and with a selection made, on only with everything, on only
    // with a made selection, and off both times.
    struct Case {
        const char* Name;
        std::shared_ptr<CImage> Image;
        uint32_t Format;
        const char *Both, *WholeOnly, *MadeOnly, *Never;
    };
    auto random = [](int bits) { return std::shared_ptr<CImage>(vmtest::RandomImage(16, 8, bits, 3)); };
    const std::vector<Case> cases = {
        {"1_bit", random(1), PixelFormat1bppIndexed,
         "ImageS2 ImageMode0 ImageMode1 Selection0 Selection4 View0", "", "Edit0 ImageS4 Selection1",
         "Edit4 Edit9 ImageS5 ImageS7 RotateCanvas3 ImageMode2 Adjust13 Blur0 Filter0 Analysis2 Make0 "
         "Beautify1"},
        {"4_bit", random(4), PixelFormat4bppIndexed, "ImageS5 RotateCanvas3 ImageMode4 ImageMode6",
         "Adjust13 Adjust8", "", "Edit4 ImageS7 ImageMode0 Adjust6 Adjust9 Blur0"},
        {"8_bit_indexed", random(8), PixelFormat8bppIndexed, "ImageMode1", "Adjust0 Adjust21", "",
         "Adjust16 ImageMode0 Analysis0 Make0"},
        {"grey", vmtest::Grey(16, 8), PixelFormat8bppGray,
         "Edit9 ImageS7 ImageMode0 Adjust6 Adjust13 Blur0 Texture6 Analysis2 Analysis3 BinaryzationEnhance0 "
         "Make0",
         "Analysis0 Analysis1 Analysis5 EdgeDetection17 BinaryzationEnhance7", "Edit4",
         "ImageMode6 Adjust8 Adjust19 Render6 Render7 Art2 Noise3 Pixelize5 Make2 Beautify1"},
        {"RGB_24", random(24), PixelFormat24bppRGB,
         "ImageMode3 Adjust6 Adjust19 Render6 Analysis0 EdgeDetection0 Make1",
         "Texture6 Analysis1 Make2 Make5 Beautify0 Beautify6", "Edit4 Edit5 Edit7 Edit10 ImageS4",
         "ImageMode0 Analysis3 Analysis4 EdgeDetection17"},
    };
    FrmMain w;
    auto check = [&w](const char* entries, bool on, const char* when) {
        static const QRegularExpression entry(QStringLiteral("^(\\D+)(\\d+)$"));
        for (const QString& e : QString::fromLatin1(entries).split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
            const QRegularExpressionMatch m = entry.match(e);
            ASSERT_TRUE(m.hasMatch()) << e.toStdString();
            EXPECT_EQ(On(w, m.captured(1).toLatin1().constData(), m.captured(2).toInt()), on)
                << e.toStdString() << " " << when;
        }
    };
    // Without a document only the window's own commands are on; the purge
    // entry follows the clipboard alone, and pasting stays off.
    check("File0 File1 File12", true, "(no document)");
    check("File2 File4 File5 File10 File11 Adjust0 Selection0 Blur0 Analysis0 Make0 Beautify0 View0 ImageS0 "
          "Edit12",
          false, "(no document)");
    QGuiApplication::clipboard()->setImage(QImage(2, 2, QImage::Format_RGB32));
    check("Edit12", true, "(clipboard)");
    check("Edit6", false, "(clipboard)");
    w.OnMenu(QStringLiteral("Purge"), 0);
    EXPECT_FALSE(On(w, "Edit", 12));

    for (const Case& k : cases) {
        SCOPED_TRACE(k.Name);
        ASSERT_TRUE(
            w.OpenDocument(Write(QString::fromLatin1(k.Name) + QStringLiteral(".bmp"), *k.Image, RawBmp)));
        Canvas* c = w.ActiveCanvas();
        ASSERT_EQ(c->Image()->PixelFormat, k.Format);
        for (bool made : {false, true}) {
            if (made) c->SelectAll();
            const char* when = made ? "(made selection)" : "(whole image)";
            check(k.Both, true, when);
            check(k.Never, false, when);
            check(k.WholeOnly, !made, when);
            check(k.MadeOnly, made, when);
        }
        int answer = 0;
        w.CloseDocument(w.CurrentSlot(), answer);
    }
    EXPECT_TRUE(recorder_.Requests.isEmpty());
}

// ------------------------------------------------------------------ keys

TEST_F(FrmMainTest, EveryAcceleratorReachesItsEntryOrNothing) {
    FrmMain w;
    w.show();
    int opened = 0, savedAs = 0, filled = 0, dialogs = 0;
    QString dialogFor;
    w.AskOpenFileNames = [&] { return ++opened, QStringList(); };
    w.AskSaveAsFileName = [&](auto&&...) { return ++savedAs, false; };
    w.AskFill = [&](FillChoice&) { return ++filled, false; };
    w.RunOperationDialog = [&](const Operation& op, Canvas&) {
        ++dialogs;
        dialogFor = op.Title;
        return false;
    };
    using K = QKeyCombination;
    const auto ctrl = Qt::ControlModifier, shift = Qt::ShiftModifier, alt = Qt::AltModifier;

    // Every key of the table is taken, none other.
    for (const AcceleratorSpec& a : Accelerators())
        EXPECT_TRUE(w.TranslateAccelerator(a.Key)) << a.Number;
    EXPECT_FALSE(w.TranslateAccelerator(K(ctrl, Qt::Key_G)));
    EXPECT_FALSE(w.TranslateAccelerator(K(Qt::NoModifier, Qt::Key_S)));
    EXPECT_EQ(opened, 1);
    EXPECT_FALSE(w.isVisible()) << "Exit is always on";
    EXPECT_TRUE(recorder_.Requests.isEmpty()) << "without a document only Open and Exit do anything";
    w.show();

    ASSERT_TRUE(w.OpenDocument(WriteRandom(QStringLiteral("k.png"), 24, RawPng)));
    Canvas* c = w.ActiveCanvas();
    const QByteArray original = Bytes(*c->Image());
    // Keys on separators and keys with no target do nothing.
    for (K key : {K(ctrl, Qt::Key_U), K(ctrl, Qt::Key_I), K(ctrl | shift, Qt::Key_U), K(ctrl, Qt::Key_N),
                  K(ctrl | shift, Qt::Key_C), K(ctrl | shift, Qt::Key_V), K(ctrl | alt, Qt::Key_C),
                  K(ctrl, Qt::Key_P), K(ctrl, Qt::Key_F)})
        EXPECT_TRUE(w.TranslateAccelerator(key));
    EXPECT_EQ(Bytes(*c->Image()), original);
    EXPECT_TRUE(recorder_.Requests.isEmpty());
    EXPECT_EQ(w.DocumentCount(), 1);

    // Disabled entries do not run: nothing to undo, nothing selected to cut.
    for (K key : {K(ctrl, Qt::Key_Z), K(ctrl, Qt::Key_X), K(ctrl, Qt::Key_C), K(shift, Qt::Key_F6)})
        w.TranslateAccelerator(key);
    EXPECT_EQ(Bytes(*c->Image()), original);
    EXPECT_TRUE(QGuiApplication::clipboard()->image().isNull());
    EXPECT_TRUE(recorder_.Requests.isEmpty());

    // The Adjust keys land one entry early. Each entry either runs its
    // operation, opens its dialog or says that it is not there yet: any of
    // the three shows which entry the key reached.
    auto reached = [&](K key, const QString& name) {
        const qsizetype messages = recorder_.Requests.size();
        const int shown = dialogs, steps = c->GetHistory().HistoryPos;
        if (!w.TranslateAccelerator(key)) return false;
        if (c->GetHistory().HistoryPos > steps) {
            const bool named = c->StatusText().startsWith(name);
            c->Undo();
            return named;
        }
        if (dialogs > shown) return dialogFor == name;
        return recorder_.Requests.size() == messages + 1 &&
               recorder_.LastText().contains(QStringLiteral("“") + name + QStringLiteral("”"));
    };
    EXPECT_TRUE(reached(K(ctrl | shift, Qt::Key_L), QStringLiteral("自动色阶")));
    EXPECT_TRUE(reached(K(ctrl | alt | shift, Qt::Key_L), QStringLiteral("自动对比度")));
    EXPECT_TRUE(reached(K(ctrl | shift, Qt::Key_B), QStringLiteral("自动颜色")));
    EXPECT_TRUE(reached(K(ctrl, Qt::Key_L), QStringLiteral("色阶")));
    EXPECT_TRUE(reached(K(ctrl, Qt::Key_M), QStringLiteral("曲线")));
    EXPECT_TRUE(reached(K(ctrl, Qt::Key_B), QStringLiteral("色相/饱和度")));
    EXPECT_TRUE(reached(K(ctrl | alt | shift, Qt::Key_B), QStringLiteral("色彩平衡")));
    EXPECT_TRUE(reached(K(ctrl | alt, Qt::Key_I), QStringLiteral("图像大小")));
    EXPECT_EQ(Bytes(*c->Image()), original);

    // Selection keys, also pressed on the window's widgets.
    QTest::keyClick(c, Qt::Key_A, Qt::ControlModifier);
    EXPECT_FALSE(c->Selection()->UseDefaultSetting());
    QTest::keyClick(w.TabDocument(), Qt::Key_D, Qt::ControlModifier);
    EXPECT_TRUE(c->Selection()->UseDefaultSetting());
    w.TranslateAccelerator(K(ctrl, Qt::Key_A));
    w.TranslateAccelerator(K(ctrl | shift, Qt::Key_I));
    EXPECT_TRUE(c->Selection()->UseDefaultSetting())
        << "inverting everything leaves nothing, then everything";
    EXPECT_EQ(recorder_.LastText(), QStringLiteral("警告，未选择任何像素。"));
    c->Selection()->AddRectangle(0, 0, 4, 4);
    w.TranslateAccelerator(K(shift, Qt::Key_F6));
    EXPECT_TRUE(recorder_.LastText().contains(QStringLiteral("“羽化选区”")));
    w.TranslateAccelerator(K(ctrl, Qt::Key_H));
    EXPECT_FALSE(c->AntVisible());
    w.TranslateAccelerator(K(ctrl, Qt::Key_H));
    EXPECT_TRUE(c->AntVisible());

    // Edit keys.
    w.TranslateAccelerator(K(ctrl, Qt::Key_C));
    EXPECT_EQ(QGuiApplication::clipboard()->image().size(), QSize(4, 4));
    w.TranslateAccelerator(K(ctrl, Qt::Key_X));
    EXPECT_NE(Bytes(*c->Image()), original);
    w.TranslateAccelerator(K(ctrl, Qt::Key_Z));
    EXPECT_EQ(Bytes(*c->Image()), original);
    w.TranslateAccelerator(K(ctrl, Qt::Key_R));
    EXPECT_NE(Bytes(*c->Image()), original);
    w.TranslateAccelerator(K(ctrl, Qt::Key_F5));
    EXPECT_EQ(filled, 1);
    w.TranslateAccelerator(K(ctrl, Qt::Key_V));
    EXPECT_EQ(w.DocumentCount(), 2);

    // File keys.
    w.TranslateAccelerator(K(ctrl, Qt::Key_O));
    EXPECT_EQ(opened, 2);
    w.TranslateAccelerator(K(ctrl, Qt::Key_S)); // the pasted picture has no family
    EXPECT_EQ(savedAs, 1);
    recorder_.Answers = {ResultNo};
    w.TranslateAccelerator(K(ctrl, Qt::Key_W));
    EXPECT_EQ(w.DocumentCount(), 1);
    recorder_.Answers = {ResultNo};
    w.TranslateAccelerator(K(ctrl | alt, Qt::Key_W));
    EXPECT_EQ(w.DocumentCount(), 0);
    w.TranslateAccelerator(K(ctrl, Qt::Key_Q));
    EXPECT_FALSE(w.isVisible());
}
