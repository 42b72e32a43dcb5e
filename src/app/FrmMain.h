#pragma once
// FrmMain: the main window. A menu bar built from the menu tables, a tab
// strip of open documents over one Canvas per document slot, the document
// commands (open, save, close), the Edit, Image, Selection and View commands,
// the enabling rules of every menu and the keyboard accelerators.
#include "app/MenuTree.h"
#include "core/Catalogue.h"
#include "core/FileFamilies.h"
#include "core/Image.h"

#include <QMainWindow>
#include <QMap>

#include <functional>
#include <vector>

class QAction;
class QDockWidget;
class QLabel;
class QMenu;
class QStackedWidget;
class QTabBar;

namespace vm {

class Canvas;
class PanelArea;
struct FillChoice;
class OptionBar;
class ToolBox;

class FrmMain : public QMainWindow {
    Q_OBJECT
  public:
    explicit FrmMain(QWidget* Parent = nullptr);
    ~FrmMain() override;

    // ---- documents
    // The active document's canvas; null when no document is open.
    Canvas* ActiveCanvas() const;
    int CurrentSlot() const { return currentSlot_; }
    // Per slot its own number while a document uses it, -1 when free.
    const std::vector<int>& TabSlots() const { return tabSlots_; }
    int MaxOpenFileCount() const { return static_cast<int>(tabSlots_.size()); }
    int DocumentCount() const;
    Canvas* SlotCanvas(int Slot) const;
    QTabBar* TabDocument() const { return tabs_; }
    // The slot of the tab at an index, -1 for none.
    int SlotOfTab(int TabIndex) const;

    bool OpenDocument(const QString& FileName);
    // The files of the command line, in order.
    void OpenFiles(const QStringList& Files);
    // Answer: 6 saved, 7 closed without saving, 2 cancelled, 0 nothing asked.
    void CloseDocument(int Slot, int& Answer);
    // Closes from the last tab to the first; false when the user cancelled.
    bool CloseAllDocuments();
    bool Save();
    bool SaveAs();

    // ---- menus
    // The entry of an array by index (a submenu's own entry for a submenu);
    // null for separators and unknown entries.
    QAction* Entry(const QString& Array, int Index) const;
    // The entry that runs a command key; null when no entry does.
    QAction* EntryOf(const QString& Key) const;
    QMenu* Menu(const QString& Array) const;
    QAction* RecentFileEntry(int Index) const;
    QAction* ClearHistoryEntry() const { return clearHistory_; }
    // What a click on the entry does: its command, by the entry's key.
    void OnMenu(const QString& Array, int Index);
    // Runs a command by its key: the window's own commands and every
    // catalogue row alike, through one map. False for an unknown key.
    bool RunCommand(const QString& Key);
    // The accelerator table: true when the key is one of its keys, whether or
    // not it reached a command.
    bool TranslateAccelerator(QKeyCombination Key);

    void UpdateMenuState();
    void UpdateFileMenu();
    void UpdateEditMenu();
    void UpdateImageMenu();
    void UpdateAdjustMenu();
    void UpdateSelectionMenu();
    void UpdateFilterMenu();
    void UpdateAnalysisMenu();
    void UpdateBeautifyMenu();
    void UpdateMakeMenu();
    void UpdateViewMenu();
    void UpdateFileHistoryMenu();

    // The Chinese name of the last filter that ran; what "上次滤镜操作" repeats.
    QString LastFilterName;

    // ---- the questions the commands ask, replaceable so that they can be
    // answered without a window
    std::function<QStringList()> AskOpenFileNames;
    std::function<bool(const QList<FileFilter>& Filters, int Selected, const QString& Suggested,
                       QString& File, int& Chosen)>
        AskSaveAsFileName;
    std::function<bool(int32_t Format, const CImage& Image, SaveOptions& Options)> AskSaveOptions;
    std::function<bool(FillChoice& Choice)> AskFill;
    // Shows the parameters of an operation and, on OK, hands its result to
    // the document. False when cancelled.
    std::function<bool(const Operation& Op, Canvas& Target)> RunOperationDialog;
    // The same for a filter: the preview dialog or the one without preview.
    std::function<bool(const Operation& Op, Canvas& Target)> RunFilterDialog;

    // The catalogue row an entry runs, by its key; null for the window's own
    // commands.
    static const Operation* FindOperationForEntry(const MenuItemSpec& Item);
    // The file's title as tabs and questions show it.
    static QString FileTitle(const QString& FileName);

  protected:
    void closeEvent(QCloseEvent* Event) override;
    bool eventFilter(QObject* Watched, QEvent* Event) override;

  private:
    void BuildMenus();
    // The tool box at the left, the option bar under the menus and the tool
    // hint in the status line.
    void BuildToolArea();
    void BuildArray(QMenu* Menu, const QString& Array);
    // The key-to-action map: the window's commands, then every row.
    void BuildCommands();
    MenuState CurrentMenuState() const;
    void UpdateTopMenu(int TopIndex);
    int FindFreeSlot() const;
    Canvas* EnsureCanvas(int Slot);
    void AddDocumentTab(int Slot, const QString& Title);
    void ActivateSlot(int Slot);
    void OnTabChanged(int Index);
    void OnCanvasMenus(Canvas* Source, int Menus);
    void AddRecentFile(const QString& FileName);
    void ClearRecentFiles();
    bool ClipboardHasPicture() const;

    void OpenRecentFile(int Index);
    void RunRow(const QString& Key);
    void RepeatLastFilter();
    void NotAvailable(const QString& Name);
    void CopyToClipboard(bool Cut);
    void PasteFromClipboard();
    void DuplicateDocument();
    bool SaveTo(const QString& Path, int32_t Format, const SaveOptions& Options);

    QTabBar* tabs_;
    QStackedWidget* stack_;
    QWidget* emptyPage_;
    std::vector<Canvas*> canvases_;
    std::vector<int> tabSlots_;
    int currentSlot_ = 0;
    QMap<QString, std::vector<QAction*>> entries_;
    QMap<QString, QMenu*> menus_;
    QMap<QString, QAction*> keyed_;
    QMap<QString, std::function<void()>> actions_;
    std::vector<QAction*> recent_;
    QAction* clearHistory_ = nullptr;
    bool closingTab_ = false;

  public:
    ToolBox* Tools() const { return toolBox_; }
    OptionBar* ToolOptions() const { return optionBar_; }

  private:
    ToolBox* toolBox_ = nullptr;
    OptionBar* optionBar_ = nullptr;
    QLabel* toolHint_ = nullptr;

  public:
    PanelArea* Panels() const { return panels_; }

  private:
    // The panel groups at the right, in a dock that shows with the first
    // document.
    void BuildPanels();
    void SyncPanels();
    PanelArea* panels_ = nullptr;
    QDockWidget* panelDock_ = nullptr;
};

} // namespace vm
