#include "app/FrmMain.h"

#include "app/AppIcon.h"
#include "app/FrmMultiUse.h"
#include "app/FrmOperation.h"
#include "app/FrmSave.h"
#include "app/OperationDialogs.h"
#include "app/OptionBar.h"
#include "app/PanelArea.h"
#include "app/ToolBox.h"
#include "canvas/Canvas.h"
#include "core/AppSettings.h"
#include "core/EditOps.h"
#include "core/MemoryGuard.h"
#include "core/MessageBox.h"
#include "core/Numeric.h"
#include "core/OperationSettings.h"
#include "core/ProcessingFrame.h"
#include "core/SettingsStore.h"
#include "core/StartUp.h"
#include "filters/ui/FrmPreViewFilters.h"
#include "formats/ParserRegistry.h"

#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QDateTime>
#include <QDir>
#include <QDockWidget>
#include <QFileDialog>
#include <QFileInfo>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QStackedWidget>
#include <QStatusBar>
#include <QTabBar>
#include <QVBoxLayout>

#include <algorithm>

namespace vm {

namespace {

const QString TooManyDocuments = QStringLiteral("无法同时打开更多的文档.");
const QString NotThatKindOfDocument = QStringLiteral("无法完成请求，因为他不是所指类型的文档.");
const QString ErrorTitle = QStringLiteral("错误");
const QString Untitled = QStringLiteral("未标题");

// A file dialog with its own captions in Chinese: the toolkit's translations
// may be missing, the editor's words are not.
QFileDialog* MakeFileDialog(QWidget* parent, const QString& title, QFileDialog::AcceptMode mode) {
    auto* d = new QFileDialog(parent, title);
    d->setAcceptMode(mode);
    d->setOption(QFileDialog::DontUseNativeDialog, true);
    d->setLabelText(QFileDialog::LookIn, QStringLiteral("查找范围(&I):"));
    d->setLabelText(QFileDialog::FileName, QStringLiteral("文件名(&N):"));
    d->setLabelText(QFileDialog::FileType, QStringLiteral("文件类型(&T):"));
    d->setLabelText(QFileDialog::Accept, mode == QFileDialog::AcceptOpen ? QStringLiteral("打开(&O)")
                                                                         : QStringLiteral("保存(&S)"));
    d->setLabelText(QFileDialog::Reject, QStringLiteral("取消"));
    return d;
}

// The name a save-as dialog suggests: the document's, with the extension of
// the family chosen.
QString WithExtension(const QString& path, int32_t format) {
    const QStringList exts = GetExtensionList(format).split(QLatin1Char(','));
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (exts.contains(suffix)) return path;
    return path + QLatin1Char('.') + exts.first();
}

bool HasWriter(int32_t format) {
    const ParserEntry* p = ParserFor(format);
    return p && p->Save;
}

} // namespace

// ------------------------------------------------------------------ set-up

FrmMain::FrmMain(QWidget* parent)
    : QMainWindow(parent), tabs_(new QTabBar), stack_(new QStackedWidget), emptyPage_(new QWidget) {
    setWindowTitle(DefaultMessageTitle);
    setWindowIcon(MakeAppIcon());
    const int slotCount = std::clamp(Globals().MaxOpenFileCount, 1, 256);
    canvases_.assign(static_cast<size_t>(slotCount), nullptr);
    tabSlots_.assign(static_cast<size_t>(slotCount), -1);

    auto* central = new QWidget;
    auto* layout = new QVBoxLayout(central);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    tabs_->setDocumentMode(true);
    tabs_->setTabsClosable(true);
    tabs_->setExpanding(false);
    tabs_->setElideMode(Qt::ElideMiddle);
    layout->addWidget(tabs_);
    emptyPage_->setAutoFillBackground(true);
    emptyPage_->setPalette(QPalette(QColor(0x80, 0x80, 0x80)));
    stack_->addWidget(emptyPage_);
    layout->addWidget(stack_, 1);
    setCentralWidget(central);
    connect(tabs_, &QTabBar::currentChanged, this, &FrmMain::OnTabChanged);
    connect(tabs_, &QTabBar::tabCloseRequested, this, [this](int index) {
        int answer = 0;
        const int slot = SlotOfTab(index);
        if (slot >= 0) CloseDocument(slot, answer);
    });

    BuildMenus();
    BuildCommands();
    BuildToolArea();
    BuildPanels();
    connect(QGuiApplication::clipboard(), &QClipboard::dataChanged, this, [this] { UpdateEditMenu(); });

    AskOpenFileNames = [this] {
        QFileDialog* d = MakeFileDialog(this, QStringLiteral("打开"), QFileDialog::AcceptOpen);
        d->setFileMode(QFileDialog::ExistingFiles);
        QStringList filters;
        for (const FileFilter& f : OpenFilterList())
            filters << f.QtFilter();
        d->setNameFilters(filters);
        const int index = std::clamp(Globals().OpenFileFormatIndex, 0, static_cast<int>(filters.size()) - 1);
        d->selectNameFilter(filters[index]);
        QStringList files;
        if (d->exec() == QDialog::Accepted) {
            files = d->selectedFiles();
            Globals().OpenFileFormatIndex = static_cast<int32_t>(filters.indexOf(d->selectedNameFilter()));
        }
        delete d;
        return files;
    };
    AskSaveAsFileName = [this](const QList<FileFilter>& list, int selected, const QString& suggested,
                               QString& file, int& chosen) {
        QFileDialog* d = MakeFileDialog(this, QStringLiteral("另存为"), QFileDialog::AcceptSave);
        QStringList filters;
        for (const FileFilter& f : list)
            filters << f.QtFilter();
        d->setNameFilters(filters);
        d->selectNameFilter(filters.value(selected));
        d->selectFile(suggested);
        const bool ok = d->exec() == QDialog::Accepted && !d->selectedFiles().isEmpty();
        if (ok) {
            file = d->selectedFiles().first();
            chosen = std::max(0, static_cast<int>(filters.indexOf(d->selectedNameFilter())));
        }
        delete d;
        return ok;
    };
    AskSaveOptions = [this](int32_t format, const CImage& image, SaveOptions& options) {
        FrmSave dialog(format, image, this);
        if (dialog.exec() != QDialog::Accepted) return false;
        options = dialog.Options();
        return true;
    };
    AskFill = [this](FillChoice& choice) {
        FrmMultiUse dialog(QStringLiteral("Fill"), this);
        dialog.SetFill(choice);
        if (dialog.exec() != QDialog::Accepted) return false;
        choice = dialog.Fill();
        return true;
    };
    RunOperationDialog = [this](const Operation& op, Canvas& target) {
        FrmOperation dialog(op, target, this);
        return dialog.exec() == QDialog::Accepted;
    };
    RunFilterDialog = [this](const Operation& op, Canvas& target) {
        return ShowFilterDialog(this, target, op);
    };

    qApp->installEventFilter(this);
    resize(1100, 760);
    UpdateFileHistoryMenu();
    UpdateMenuState();
}

FrmMain::~FrmMain() {
    qApp->removeEventFilter(this);
}

void FrmMain::BuildMenus() {
    for (const TopMenuSpec& top : TopMenus()) {
        QMenu* menu = menuBar()->addMenu(top.Caption);
        for (int i = 0; i < top.Arrays.size(); ++i) {
            if (i > 0) menu->addSeparator();
            BuildArray(menu, top.Arrays[i]);
        }
    }
    for (const CaptionKeySpec& k : CaptionKeys()) {
        QAction* a = Entry(k.Array, k.Index);
        if (a) a->setText(a->text() + QLatin1Char('\t') + k.KeyText);
    }
    if (QAction* ruler = EntryOf(QStringLiteral("Ruler"))) ruler->setCheckable(true);
}

void FrmMain::BuildArray(QMenu* menu, const QString& array) {
    const MenuArraySpec* menuArray = FindMenuArray(array);
    if (!menuArray) return;
    menus_[array] = menu;
    std::vector<QAction*>& list = entries_[array];
    list.assign(menuArray->Items.size(), nullptr);
    for (size_t i = 0; i < menuArray->Items.size(); ++i) {
        const MenuItemSpec& item = menuArray->Items[i];
        if (item.IsSeparator()) {
            menu->addSeparator();
            continue;
        }
        if (item.Submenu == QLatin1String("HistoryFileList")) {
            QMenu* sub = menu->addMenu(item.Caption);
            menus_[item.Submenu] = sub;
            for (int r = 0; r < RecentFileEntries; ++r) {
                QAction* a = sub->addAction(QString());
                a->setVisible(false);
                connect(a, &QAction::triggered, this, [this, r] { OpenRecentFile(r); });
                recent_.push_back(a);
            }
            sub->addSeparator();
            clearHistory_ = sub->addAction(QStringLiteral("清除最近"));
            connect(clearHistory_, &QAction::triggered, this, [this] { ClearRecentFiles(); });
            list[i] = sub->menuAction();
            continue;
        }
        if (!item.Submenu.isEmpty()) {
            QMenu* sub = menu->addMenu(item.Caption);
            BuildArray(sub, item.Submenu);
            list[i] = sub->menuAction();
            continue;
        }
        QAction* a = menu->addAction(CaptionOf(item));
        if (!item.Key.isEmpty() && !item.HasNoCommand()) {
            // A key shown twice ("自定义阈值" runs the threshold) is found at its first entry.
            if (!keyed_.contains(item.Key)) keyed_.insert(item.Key, a);
            connect(a, &QAction::triggered, this, [this, key = item.Key] { RunCommand(key); });
        }
        list[i] = a;
    }
}

QAction* FrmMain::Entry(const QString& array, int index) const {
    auto it = entries_.find(array);
    if (it == entries_.end() || index < 0 || index >= static_cast<int>(it->size())) return nullptr;
    return (*it)[static_cast<size_t>(index)];
}

QAction* FrmMain::EntryOf(const QString& key) const {
    return keyed_.value(key, nullptr);
}

QMenu* FrmMain::Menu(const QString& array) const {
    return menus_.value(array, nullptr);
}

QAction* FrmMain::RecentFileEntry(int index) const {
    return index >= 0 && index < static_cast<int>(recent_.size()) ? recent_[static_cast<size_t>(index)]
                                                                  : nullptr;
}

// ------------------------------------------------------------------ slots and tabs

Canvas* FrmMain::ActiveCanvas() const {
    if (currentSlot_ < 0 || currentSlot_ >= MaxOpenFileCount()) return nullptr;
    if (tabSlots_[static_cast<size_t>(currentSlot_)] != currentSlot_) return nullptr;
    return canvases_[static_cast<size_t>(currentSlot_)];
}

int FrmMain::DocumentCount() const {
    return tabs_->count();
}

Canvas* FrmMain::SlotCanvas(int slot) const {
    if (slot < 0 || slot >= MaxOpenFileCount()) return nullptr;
    return canvases_[static_cast<size_t>(slot)];
}

int FrmMain::SlotOfTab(int index) const {
    if (index < 0 || index >= tabs_->count()) return -1;
    bool ok = false;
    const int slot = tabs_->tabData(index).toInt(&ok);
    return ok ? slot : -1;
}

int FrmMain::FindFreeSlot() const {
    for (int i = 0; i < MaxOpenFileCount(); ++i)
        if (tabSlots_[static_cast<size_t>(i)] != i) return i;
    return -1;
}

Canvas* FrmMain::EnsureCanvas(int slot) {
    Canvas*& c = canvases_[static_cast<size_t>(slot)];
    if (!c) {
        c = new Canvas;
        stack_->addWidget(c);
        connect(c, &Canvas::MenusNeedUpdate, this, [this, c](int menus) { OnCanvasMenus(c, menus); });
        connect(c, &Canvas::DeleteRequested, this, [this, c] {
            QAction* clear = EntryOf(QStringLiteral("Clear"));
            if (c == ActiveCanvas() && clear && clear->isEnabled()) RunCommand(QStringLiteral("Clear"));
        });
    }
    // Laid out before the picture arrives, so that its best position is
    // worked out for the real view.
    c->setGeometry(stack_->rect());
    return c;
}

void FrmMain::AddDocumentTab(int slot, const QString& title) {
    tabSlots_[static_cast<size_t>(slot)] = slot;
    const int index = tabs_->addTab(title);
    tabs_->setTabData(index, slot);
    tabs_->setTabToolTip(index, canvases_[static_cast<size_t>(slot)]->Image()->FileName);
    tabs_->setCurrentIndex(index);
    ActivateSlot(slot);
}

void FrmMain::ActivateSlot(int slot) {
    currentSlot_ = slot;
    Canvas* c = ActiveCanvas();
    stack_->setCurrentWidget(c ? static_cast<QWidget*>(c) : emptyPage_);
    if (c) c->setFocus();
    UpdateMenuState();
}

void FrmMain::OnTabChanged(int index) {
    if (closingTab_) return;
    const int slot = SlotOfTab(index);
    if (slot >= 0) ActivateSlot(slot);
}

void FrmMain::OnCanvasMenus(Canvas* source, int menus) {
    if (source != ActiveCanvas()) return;
    if (menus == CanvasMenuAll) {
        UpdateMenuState();
        return;
    }
    if (menus & CanvasMenuFile) UpdateFileMenu();
    if (menus & CanvasMenuEdit) UpdateEditMenu();
    if (menus & CanvasMenuMake) UpdateMakeMenu();
    if (menus & CanvasMenuBeautify) UpdateBeautifyMenu();
}

QString FrmMain::FileTitle(const QString& fileName) {
    const qsizetype cut =
        std::max(fileName.lastIndexOf(QLatin1Char('/')), fileName.lastIndexOf(QLatin1Char('\\')));
    return fileName.mid(cut + 1);
}

// ------------------------------------------------------------------ documents

bool FrmMain::OpenDocument(const QString& fileName) {
    const QString path = fileName.isEmpty() ? fileName : QFileInfo(fileName).absoluteFilePath();
    for (int i = 0; i < tabs_->count(); ++i) {
        Canvas* c = SlotCanvas(SlotOfTab(i));
        if (c && c->Image() && c->Image()->FileName == path) {
            tabs_->setCurrentIndex(i);
            return true;
        }
    }
    const int slot = FindFreeSlot();
    if (slot < 0) {
        MessageBox(TooManyDocuments, 0, ErrorTitle);
        return false;
    }
    Canvas* c = EnsureCanvas(slot);
    if (!c->LoadPictureFromFile(path)) {
        MessageBox(NotThatKindOfDocument, 0, ErrorTitle);
        c->DisposeAll();
        stack_->setCurrentWidget(ActiveCanvas() ? static_cast<QWidget*>(ActiveCanvas()) : emptyPage_);
        return false;
    }
    if (c->Image()->FileName.isEmpty()) c->Image()->FileName = path;
    AddDocumentTab(slot, FileTitle(path));
    AddRecentFile(path);
    return true;
}

void FrmMain::OpenFiles(const QStringList& files) {
    for (const QString& f : files)
        OpenDocument(f);
}

void FrmMain::CloseDocument(int slot, int& answer) {
    answer = 0;
    Canvas* c = SlotCanvas(slot);
    if (!c || slot >= MaxOpenFileCount() || tabSlots_[static_cast<size_t>(slot)] != slot) return;
    int tab = -1;
    for (int i = 0; i < tabs_->count(); ++i)
        if (SlotOfTab(i) == slot) tab = i;
    if (c->ImageChanged && c->Image() &&
        (!c->Image()->FileName.isEmpty() || c->Image()->RawImageFormat != 0)) {
        answer = MessageBox(QStringLiteral("要在关闭之前存储对Osier VelluMark文档") +
                                FileTitle(c->Image()->FileName) + QStringLiteral("的更改吗？"),
                            0, QString(), ButtonsYesNoCancel, IconExclamation);
        if (answer == ResultCancel) return;
        if (answer == ResultYes) {
            if (tab >= 0) tabs_->setCurrentIndex(tab);
            ActivateSlot(slot);
            // A save that did not happen (cancelled or failed) keeps the
            // document open: closing now would lose the change it was asked
            // to keep.
            if (!Save() || c->ImageChanged) {
                answer = ResultCancel;
                return;
            }
        }
    }
    closingTab_ = true;
    if (tab >= 0) tabs_->removeTab(tab);
    closingTab_ = false;
    c->DisposeAll();
    tabSlots_[static_cast<size_t>(slot)] = -1;
    if (tabs_->count() > 0) {
        // The neighbour on the left, or the next one when the first closed.
        const int next = tab > 0 ? tab - 1 : 0;
        tabs_->setCurrentIndex(next);
        ActivateSlot(SlotOfTab(next));
    } else {
        ActivateSlot(0);
    }
}

bool FrmMain::CloseAllDocuments() {
    for (int i = tabs_->count() - 1; i >= 0; --i) {
        int answer = 0;
        CloseDocument(SlotOfTab(i), answer);
        if (answer == ResultCancel) return false;
    }
    return true;
}

void FrmMain::closeEvent(QCloseEvent* event) {
    if (!CloseAllDocuments()) {
        event->ignore();
        return;
    }
    event->accept();
}

// ------------------------------------------------------------------ recent files

void FrmMain::AddRecentFile(const QString& fileName) {
    QStringList& files = Globals().HistoryFiles;
    for (qsizetype i = files.size() - 1; i >= 0; --i)
        if (files[i].compare(fileName, Qt::CaseInsensitive) == 0) files.removeAt(i);
    files.prepend(fileName);
    const int limit = std::clamp(Globals().MaxHistoryListCount, 0, RecentFileEntries);
    while (files.size() > limit)
        files.removeLast();
    UpdateFileHistoryMenu();
}

void FrmMain::ClearRecentFiles() {
    QStringList& files = Globals().HistoryFiles;
    // The stored names go from the highest index down, as the list is read.
    for (int i = static_cast<int>(files.size()) - 1; i >= 0; --i)
        SaveSetting(SettingsRoot, QStringLiteral("HistoryDocument"),
                    QStringLiteral("FileName") + QString::number(i), QString());
    SaveSettingInt(SettingsRoot, QStringLiteral("HistoryDocument"), QStringLiteral("FileCount"), 0);
    files.clear();
    UpdateFileHistoryMenu();
}

void FrmMain::UpdateFileHistoryMenu() {
    const QStringList& files = Globals().HistoryFiles;
    for (int i = 0; i < static_cast<int>(recent_.size()); ++i) {
        QAction* a = recent_[static_cast<size_t>(i)];
        if (i < files.size()) {
            QString text = files[i];
            text.replace(QLatin1Char('&'), QStringLiteral("&&"));
            a->setText((i < 9 ? QStringLiteral("&%1 ").arg(i + 1) : QStringLiteral("%1 ").arg(i + 1)) + text);
            a->setVisible(true);
        } else {
            a->setVisible(false);
        }
    }
    if (clearHistory_) clearHistory_->setEnabled(!files.isEmpty());
}

// ------------------------------------------------------------------ saving

bool FrmMain::SaveTo(const QString& path, int32_t format, const SaveOptions& options) {
    Canvas* c = ActiveCanvas();
    if (!c || !c->HasImage()) return false;
    if (!c->Image()->SavePictureToFile(path, format, options)) {
        MessageBox(QStringLiteral("无法保存文件\"") + QDir::toNativeSeparators(path) +
                       QStringLiteral("\"。原有的文件没有改变。"),
                   0, ErrorTitle, ButtonsOk, IconCritical);
        return false;
    }
    return true;
}

bool FrmMain::Save() {
    Canvas* c = ActiveCanvas();
    if (!c || !c->HasImage()) return false;
    CImage& image = *c->Image();
    if (image.RawPixelFormat != image.PixelFormat || image.RawImageFormat == 0) return SaveAs();
    const int32_t format = image.RawImageFormat;
    const bool noWriter = format == RawWmf || format == RawEmf || format == RawPsd || format == RawPcd ||
                          format == RawDicom || !HasWriter(format);
    if (noWriter) {
        if (!Globals().ShowPromptSaveNotSupported) {
            bool dontAsk = false;
            MessageBox(QStringLiteral(
                           "很抱歉，WMF、EMF、PSD、DCM、PCD等图像无法保存为原始格式，请选择其他格式保存."),
                       0, QStringLiteral("提示"), ButtonsOk, IconInformation, QStringLiteral("不再提示"),
                       &dontAsk);
            Globals().ShowPromptSaveNotSupported = dontAsk;
        }
        return SaveAs();
    }
    if (format == RawJpeg && image.RawPixelFormat == PixelFormat8bppGray)
        MessageBox(QStringLiteral("很抱歉，无法保留原始的灰度格式，将转换为24位JPG图像."), 0, QString(),
                   ButtonsOk, IconInformation);
    if (!SaveTo(image.FileName, format, FrmSave::RememberedOptions(format, image))) return false;
    c->ImageChanged = false;
    UpdateFileMenu();
    return true;
}

bool FrmMain::SaveAs() {
    Canvas* c = ActiveCanvas();
    if (!c || !c->HasImage()) return false;
    CImage& image = *c->Image();
    // The families that can hold the picture's format, as far as a writer
    // for them is built.
    QList<FileFilter> filters;
    for (const FileFilter& f : SaveAsFilterList(image.PixelFormat))
        if (HasWriter(f.Format)) filters << f;
    if (filters.isEmpty()) {
        MessageBox(QStringLiteral("很抱歉，当前的图像模式没有可以保存的文件格式，请先转换图像模式."), 0,
                   QStringLiteral("提示"), ButtonsOk, IconInformation);
        return false;
    }
    int selected = 0;
    for (int i = 0; i < filters.size(); ++i)
        if (filters[i].Format == image.RawImageFormat) selected = i;
    QString suggested = image.FileName;
    if (QFileInfo(suggested).isRelative()) suggested = QDir::home().filePath(suggested);
    QString file;
    int chosen = selected;
    if (!AskSaveAsFileName(filters, selected, suggested, file, chosen) || file.isEmpty()) return false;
    chosen = std::clamp(chosen, 0, static_cast<int>(filters.size()) - 1);
    const int32_t format = filters[chosen].Format;
    const QString path = WithExtension(file, format);
    SaveOptions options = FrmSave::RememberedOptions(format, image);
    if (FrmSave::HasOptions(format) && !AskSaveOptions(format, image, options)) return false;
    if (!SaveTo(path, format, options)) return false;
    image.FileName = path;
    c->ImageChanged = false;
    for (int i = 0; i < tabs_->count(); ++i) {
        if (SlotOfTab(i) == currentSlot_) {
            tabs_->setTabText(i, FileTitle(path));
            tabs_->setTabToolTip(i, path);
        }
    }
    UpdateFileMenu();
    return true;
}

// ------------------------------------------------------------------ commands

void FrmMain::NotAvailable(const QString& name) {
    MessageBox(QStringLiteral("很抱歉，“") + name + QStringLiteral("”命令在这个版本中还不能使用。"), 0,
               QStringLiteral("提示"), ButtonsOk, IconInformation);
}

const Operation* FrmMain::FindOperationForEntry(const MenuItemSpec& item) {
    return FindOperation(item.Key);
}

void FrmMain::BuildCommands() {
    auto doc = [this](std::function<void(Canvas&)> work) {
        return [this, work] {
            Canvas* c = ActiveCanvas();
            if (c && c->HasImage()) work(*c);
        };
    };
    auto notYet = [this](const QString& key) {
        return [this, key] {
            const MenuItemSpec* item = FindMenuItemByKey(key);
            NotAvailable(CommandNameOfCaption(item ? CaptionOf(*item) : key));
        };
    };
    // ---- 文件
    actions_[QStringLiteral("Open")] = [this] {
        for (const QString& f : AskOpenFileNames())
            OpenDocument(f);
    };
    actions_[QStringLiteral("Save")] = [this] { Save(); };
    actions_[QStringLiteral("SaveAs")] = [this] { SaveAs(); };
    actions_[QStringLiteral("Close")] = [this] {
        int answer = 0;
        CloseDocument(currentSlot_, answer);
    };
    actions_[QStringLiteral("CloseAll")] = [this] { CloseAllDocuments(); };
    actions_[QStringLiteral("Exit")] = [this] { close(); };
    // ---- 编辑
    actions_[QStringLiteral("Undo")] = doc([this](Canvas& c) {
        c.Undo();
        UpdateEditMenu();
    });
    actions_[QStringLiteral("Redo")] = doc([this](Canvas& c) {
        c.Redo();
        UpdateEditMenu();
    });
    actions_[QStringLiteral("Cut")] = doc([this](Canvas&) { CopyToClipboard(true); });
    actions_[QStringLiteral("Copy")] = doc([this](Canvas&) { CopyToClipboard(false); });
    actions_[QStringLiteral("Paste")] = [this] { PasteFromClipboard(); };
    auto purge = [this](bool clipboard, bool history) {
        return [this, clipboard, history] {
            if (clipboard) QGuiApplication::clipboard()->clear();
            if (Canvas* c = ActiveCanvas(); history && c) c->PurgeHistory();
            UpdateEditMenu();
        };
    };
    actions_[QStringLiteral("PurgeClipboard")] = purge(true, false);
    actions_[QStringLiteral("PurgeHistory")] = purge(false, true);
    actions_[QStringLiteral("PurgeAll")] = purge(true, true);
    for (const char* key :
         {"SettingGeneral", "SettingInterface", "SettingFiles", "SettingOther", "Properties", "CheckUpdate"})
        actions_[QString::fromLatin1(key)] = notYet(QString::fromLatin1(key));
    // ---- 图像
    actions_[QStringLiteral("Duplicate")] = doc([this](Canvas&) { DuplicateDocument(); });
    // ---- 选择: rows whose work is the canvas' own.
    actions_[QStringLiteral("SelectAll")] = doc([](Canvas& c) { c.SelectAll(); });
    actions_[QStringLiteral("CancelSelect")] = doc([](Canvas& c) { c.CancelSelect(); });
    actions_[QStringLiteral("InvertSelect")] = doc([](Canvas& c) { c.InvertSelect(); });
    actions_[QStringLiteral("SelectSimilar")] =
        doc([](Canvas& c) { c.SelectSimilar(Globals().MagicWandTorlance); });
    actions_[QStringLiteral("ToggleAnts")] = doc([](Canvas& c) { c.SetAntVisible(!c.AntVisible()); });
    // ---- 滤镜
    actions_[QStringLiteral("RepeatFilter")] = [this] { RepeatLastFilter(); };
    // ---- 视图
    auto view = [this, doc](std::function<void(Canvas&)> work) {
        return doc([this, work](Canvas& c) {
            work(c);
            UpdateViewMenu();
        });
    };
    actions_[QStringLiteral("ZoomIn")] = view([](Canvas& c) { c.SetZoomFactor(1); });
    actions_[QStringLiteral("ZoomOut")] = view([](Canvas& c) { c.SetZoomFactor(0); });
    actions_[QStringLiteral("BestPosition")] = view([](Canvas& c) { c.ShowImageAtBestPosition(); });
    actions_[QStringLiteral("ActualPixels")] = view([](Canvas& c) { c.ShowImageAtItsOriginalSize(); });
    actions_[QStringLiteral("FitScreen")] = view([](Canvas& c) { c.ShowImageAtFitToScreen(); });
    actions_[QStringLiteral("FillScreen")] = view([](Canvas& c) { c.ShowImageAtFillScreen(); });
    actions_[QStringLiteral("Ruler")] = view([](Canvas& c) { c.SetShowRuler(!c.ShowRuler()); });
    // ---- 帮助
    actions_[QStringLiteral("About")] = [] {
        MessageBox(QStringLiteral("Osier VelluMark 2.0\n\n位图图像编辑器。"), 0,
                   QStringLiteral("关于VelluMark"), ButtonsOk, IconInformation);
    };
    // Every other key of the menus is a catalogue row.
    for (const MenuArraySpec& a : MenuArrays())
        for (const MenuItemSpec& item : a.Items)
            if (!item.Key.isEmpty() && !actions_.contains(item.Key)) {
                const QString key = item.Key;
                actions_[key] = [this, key] { RunRow(key); };
            }
}

bool FrmMain::RunCommand(const QString& key) {
    auto it = actions_.find(key);
    if (it == actions_.end()) return false;
    const std::function<void()> action = it.value();
    // A command that runs out of memory says so and leaves the program, and
    // every other document, running.
    if (!GuardMemory(action)) UpdateMenuState();
    return true;
}

void FrmMain::OnMenu(const QString& array, int index) {
    if (array == QLatin1String("HistoryFileList")) {
        OpenRecentFile(index);
        return;
    }
    const MenuItemSpec* item = FindMenuItem(array, index);
    // Separators, submenus and entries whose caption ends in a blank have no
    // command behind them.
    if (!item || item->Key.isEmpty() || item->HasNoCommand()) return;
    RunCommand(item->Key);
}

void FrmMain::OpenRecentFile(int index) {
    const QStringList& files = Globals().HistoryFiles;
    if (index < 0 || index >= files.size()) return;
    const QString path = files[index];
    if (FileExists(path))
        OpenDocument(path);
    else
        MessageBox(QStringLiteral("无法打开所选的项目，因为找不到该文件."));
}

void FrmMain::RunRow(const QString& key) {
    Canvas* c = ActiveCanvas();
    const Operation* op = FindOperation(key);
    if (!op || !c || !c->HasImage()) return;
    const CommandDialog dialog = DialogOfRow(op->Key);
    if (!op->Run && !dialog) {
        NotAvailable(op->Title);
        return;
    }
    CImage& image = *c->Image();
    if (!op->Accepts(image.PixelFormat)) {
        MessageBox(QStringLiteral("当前的图像模式不支持“") + op->Title + QStringLiteral("”命令。"), 0,
                   QStringLiteral("提示"), ButtonsOk, IconInformation);
        return;
    }
    if (image.IsSelectionEmpty()) {
        MessageBox(EmptySelectionMessage(op->Title));
        return;
    }
    const bool hasParams = !op->Sliders.empty() || !op->Choices.empty() || !op->Checks.empty() ||
                           !op->Texts.empty() || op->Dial.has_value();
    bool done = true;
    if (dialog)
        done = dialog(*this, *op, *c);
    else if (hasParams)
        done = op->Filter ? RunFilterDialog(*op, *c) : RunOperationDialog(*op, *c);
    else
        done = op->Run(image, LoadStoredParams(*op, image));
    // The dialog's title names the filter for the repeat (the minimum and
    // maximum filters both say "最大值" there, and so the repeat runs the
    // maximum after either).
    if (done && op->Filter) LastFilterName = hasParams ? op->CaptionOfDialog() : op->Title;
    UpdateMenuState();
}

void FrmMain::RepeatLastFilter() {
    Canvas* c = ActiveCanvas();
    const QString name = LastFilterName.trimmed();
    if (!c || !c->HasImage() || name.isEmpty()) return;
    const Operation* op = FindOperationByCaption(name);
    if (!op || !op->Run) {
        NotAvailable(name);
        return;
    }
    SeedRnd(static_cast<uint32_t>(QDateTime::currentMSecsSinceEpoch()));
    if (c->Image()->IsSelectionEmpty()) {
        MessageBox(EmptySelectionMessage(op->Title));
        return;
    }
    // No dialog: the values as the repeat reads them from the store.
    op->Run(*c->Image(), ReadRepeatParams(*op, *c->Image()));
    UpdateMenuState();
}

void FrmMain::CopyToClipboard(bool cut) {
    Canvas* c = ActiveCanvas();
    if (!c || !c->HasImage()) return;
    std::unique_ptr<CImage> part = c->Image()->GetSelectionImage();
    if (!part || !part->Handle()) return;
    // A 32-bit picture whose alpha is the selection's weight.
    const QImage picture =
        QImage(part->Pointer(), part->Width(), part->Height(), part->Stride(), QImage::Format_ARGB32).copy();
    QGuiApplication::clipboard()->setImage(picture);
    if (cut) Clear(*c->Image(), Globals().SystemBackColor);
    UpdateEditMenu();
}

bool FrmMain::ClipboardHasPicture() const {
    const QMimeData* m = QGuiApplication::clipboard()->mimeData();
    return m && m->hasImage();
}

void FrmMain::PasteFromClipboard() {
    if (!ClipboardHasPicture()) return;
    const int slot = FindFreeSlot();
    if (slot < 0) {
        MessageBox(TooManyDocuments, 0, ErrorTitle);
        return;
    }
    Canvas* c = EnsureCanvas(slot);
    // A picture too large for the memory left is refused like any other
    // command; the slot stays free.
    bool outOfMemory = true;
    const bool loaded = GuardMemory([&] {
        const QImage picture = QGuiApplication::clipboard()->image();
        const bool done = c->LoadPictureFormStdPicture(picture);
        outOfMemory = false;
        return done;
    });
    if (!loaded) {
        if (!outOfMemory) MessageBox(NotThatKindOfDocument, 0, ErrorTitle);
        c->DisposeAll();
        return;
    }
    c->Image()->FileName = Untitled;
    AddDocumentTab(slot, Untitled);
}

void FrmMain::DuplicateDocument() {
    Canvas* source = ActiveCanvas();
    if (!source || !source->HasImage()) return;
    QString title;
    for (int i = 0; i < tabs_->count(); ++i)
        if (SlotOfTab(i) == currentSlot_) title = tabs_->tabText(i);
    const int slot = FindFreeSlot();
    if (slot < 0) {
        MessageBox(TooManyDocuments, 0, ErrorTitle);
        return;
    }
    Canvas* c = EnsureCanvas(slot);
    if (!c->CopyFormCanvas(*source)) {
        c->DisposeAll();
        return;
    }
    AddDocumentTab(slot, title);
}

// ------------------------------------------------------------------ accelerators

bool FrmMain::TranslateAccelerator(QKeyCombination key) {
    for (const AcceleratorSpec& a : Accelerators()) {
        if (a.Key != key) continue;
        if (a.Array.isEmpty()) {
            if (!a.Command.isEmpty()) RunCommand(a.Command);
            return true;
        }
        // The entry named decides whether the key does anything, and its key
        // what it does.
        const MenuItemSpec* item = FindMenuItem(a.Array, a.Index);
        QAction* entry = Entry(a.Array, a.Index);
        if (item && entry && entry->isEnabled() && !item->Key.isEmpty() && !item->HasNoCommand())
            RunCommand(item->Key);
        return true;
    }
    return false;
}

bool FrmMain::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::KeyPress) return false;
    auto* widget = qobject_cast<QWidget*>(watched);
    // Keys of this window only, and never while a dialog holds the input.
    if (!widget || widget->window() != this || QApplication::activeModalWidget()) return false;
    auto* key = static_cast<QKeyEvent*>(event);
    const Qt::KeyboardModifiers mods =
        key->modifiers() & (Qt::ControlModifier | Qt::ShiftModifier | Qt::AltModifier | Qt::MetaModifier);
    return TranslateAccelerator(QKeyCombination(mods, static_cast<Qt::Key>(key->key())));
}

// ------------------------------------------------------------------ enabling rules

MenuState FrmMain::CurrentMenuState() const {
    MenuState s;
    s.Clipboard = ClipboardHasPicture();
    Canvas* c = ActiveCanvas();
    if (!c || !c->HasImage()) return s;
    s.Document = true;
    s.Format = c->Image()->PixelFormat;
    const CSelection* selection = c->Selection();
    s.WholeSelected = selection && selection->UseDefaultSetting();
    s.SelectionOnCanvas = selection && selection->IsSelectionValidToCanvas();
    s.Undo = c->GetUndoState();
    s.Redo = c->GetRedoState();
    s.SaveNeeded = c->ImageChanged || c->Image()->RawImageFormat == 0;
    // The repeat follows the rule of the filter it would run.
    const Operation* last = FindOperationByCaption(LastFilterName.trimmed());
    s.RepeatAllowed = last && last->Filter && last->Allows(s.Format, s.WholeSelected, s.SelectionOnCanvas);
    return s;
}

void FrmMain::UpdateTopMenu(int topIndex) {
    const MenuState state = CurrentMenuState();
    for (const QString& array : ArraysOfTopMenu(topIndex)) {
        const MenuArraySpec* a = FindMenuArray(array);
        for (size_t i = 0; a && i < a->Items.size(); ++i)
            if (QAction* entry = Entry(array, static_cast<int>(i)))
                entry->setEnabled(EntryEnabled(a->Items[i], state));
    }
}

void FrmMain::UpdateMenuState() {
    UpdateFileMenu();
    UpdateEditMenu();
    UpdateImageMenu();
    UpdateAdjustMenu();
    UpdateSelectionMenu();
    UpdateFilterMenu();
    UpdateAnalysisMenu();
    UpdateBeautifyMenu();
    UpdateMakeMenu();
    UpdateViewMenu();
    SyncPanels();
}

// The top menus in the menu bar's order.
void FrmMain::UpdateFileMenu() {
    UpdateTopMenu(0);
}
void FrmMain::UpdateEditMenu() {
    UpdateTopMenu(1);
}
void FrmMain::UpdateImageMenu() {
    UpdateTopMenu(2);
}
void FrmMain::UpdateAdjustMenu() {
    UpdateTopMenu(3);
}
void FrmMain::UpdateSelectionMenu() {
    UpdateTopMenu(4);
}

void FrmMain::UpdateFilterMenu() {
    UpdateTopMenu(5);
    if (QAction* r = Entry(QStringLiteral("Repeat"), 0)) {
        const QString name = LastFilterName.trimmed();
        r->setText((name.isEmpty() ? QStringLiteral("上次滤镜操作") : name) + QStringLiteral("\tCtrl+F"));
    }
}

void FrmMain::UpdateAnalysisMenu() {
    UpdateTopMenu(6);
}
void FrmMain::UpdateMakeMenu() {
    UpdateTopMenu(7);
}
void FrmMain::UpdateBeautifyMenu() {
    UpdateTopMenu(8);
}

void FrmMain::UpdateViewMenu() {
    UpdateTopMenu(9);
    Canvas* c = ActiveCanvas();
    if (QAction* ruler = EntryOf(QStringLiteral("Ruler")))
        ruler->setChecked(c && c->HasImage() && c->ShowRuler());
}

// ------------------------------------------------------------------ tools

void FrmMain::BuildToolArea() {
    toolBox_ = new ToolBox(this);
    addToolBar(Qt::LeftToolBarArea, toolBox_);
    optionBar_ = new OptionBar(this);
    optionBar_->ActiveCanvas = [this] { return ActiveCanvas(); };
    addToolBar(Qt::TopToolBarArea, optionBar_);
    toolHint_ = new QLabel;
    toolHint_->setObjectName(QStringLiteral("ToolHint"));
    statusBar()->addWidget(toolHint_, 1);

    connect(toolBox_, &ToolBox::ToolChanged, optionBar_, &OptionBar::ShowTool);
    connect(toolBox_, &ToolBox::HintChanged, toolHint_, &QLabel::setText);
    connect(toolBox_, &ToolBox::ToolChanged, this, [this] {
        for (Canvas* c : canvases_)
            if (c) {
                c->CancelStroke();
                c->UpdateToolCursor(QGuiApplication::keyboardModifiers());
            }
    });
    // Canvases come with their documents; the letter keys of the one shown
    // choose tools.
    connect(stack_, &QStackedWidget::currentChanged, this, [this](int index) {
        if (auto* c = qobject_cast<Canvas*>(stack_->widget(index))) {
            connect(c, &Canvas::ToolKeyPressed, toolBox_, &ToolBox::ToolButton_Click, Qt::UniqueConnection);
            c->UpdateToolCursor(QGuiApplication::keyboardModifiers());
        }
    });
    // The tool of the last run; an index that is no tool gives the first.
    const int32_t last = Globals().LastSelectedTool;
    toolBox_->ToolButton_Click(FindTool(last) ? last : ToolRectangle);
}

void FrmMain::BuildPanels() {
    panels_ = new PanelArea(this);
    panelDock_ = new QDockWidget(this);
    panelDock_->setObjectName(QStringLiteral("PanelDock"));
    panelDock_->setTitleBarWidget(new QWidget(panelDock_));
    panelDock_->setFeatures(QDockWidget::NoDockWidgetFeatures);
    panelDock_->setWidget(panels_);
    addDockWidget(Qt::RightDockWidgetArea, panelDock_);
    panelDock_->hide();
}

void FrmMain::SyncPanels() {
    if (!panels_) return;
    Canvas* c = ActiveCanvas();
    // Without a document the tools have nothing to work on.
    const bool doc = c && c->HasImage();
    panelDock_->setVisible(doc);
    if (toolBox_) toolBox_->setEnabled(doc);
    if (optionBar_) {
        optionBar_->setEnabled(doc);
        // The blend lists follow the document's format.
        optionBar_->LoadValues();
    }
    // The panels follow their document's changes themselves.
    panels_->SetCanvas(c);
}

} // namespace vm
