#pragma once
// The main window's menus as data: every array of entries with its captions,
// the operation each entry runs, the keyboard accelerators and the key texts
// the captions carry. FrmMain builds its menu bar from these tables; a later
// operation is wired by giving its row an operation key, nothing else.
#include <QKeyCombination>
#include <QString>
#include <QStringList>

#include <cstdint>

#include <vector>

namespace vm {

// What the enabling rules of the entries read, taken from the active document
// once per update.
struct MenuState {
    bool Document = false;
    uint32_t Format = 0;
    // Nothing made: everything is selected by default.
    bool WholeSelected = true;
    // A made selection with a pixel on the canvas.
    bool SelectionOnCanvas = false;
    bool Undo = false;
    bool Redo = false;
    bool Clipboard = false;
    // The image changed since it was saved, or has no family to save back to.
    bool SaveNeeded = false;
    // "上次滤镜操作" has a filter to repeat that the picture allows.
    bool RepeatAllowed = false;
};

// A named enabling rule of an entry that is not (only) a catalogue row.
using EntryRule = bool (*)(const MenuState&);

struct MenuItemSpec {
    // The caption as the menu shows it, for the window's own commands, the
    // submenus and the entries without a command; empty for a catalogue
    // entry, whose caption is its row's title (see CaptionOf). A caption that
    // ends in a blank marks an entry that has no command behind it.
    QString Caption;
    // The command the entry runs: a catalogue row's key, or one of the
    // window's own commands. Empty for submenus and entries without a command.
    QString Key;
    // A catalogue entry's access key and whether its caption ends in "...".
    QChar AccessKey;
    bool Dots = false;
    // The array of the submenu the entry opens, if it opens one.
    QString Submenu;
    // When the entry is on. For a catalogue entry this comes on top of its
    // row's formats and selection needs. Null: on with a document.
    EntryRule Rule = nullptr;

    bool IsSeparator() const { return Caption.isEmpty() && Key.isEmpty() && Submenu.isEmpty(); }
    bool HasNoCommand() const { return Caption.endsWith(QLatin1Char(' ')); }
};

struct MenuArraySpec {
    QString Array;
    std::vector<MenuItemSpec> Items;
};

// Every array, top-level menus and submenus alike.
const std::vector<MenuArraySpec>& MenuArrays();
const MenuArraySpec* FindMenuArray(const QString& Array);
const MenuItemSpec* FindMenuItem(const QString& Array, int Index);

// A top-level menu: its caption and the arrays it shows one after the
// other, separated by a line.
struct TopMenuSpec {
    QString Caption;
    QStringList Arrays;
};
const std::vector<TopMenuSpec>& TopMenus();

// The arrays under the filter menu that hold the filter families.
const QStringList& FilterFamilyArrays();
// The arrays a top-level menu shows, its submenus' arrays included, in order.
QStringList ArraysOfTopMenu(int TopIndex);

// The caption an entry shows: a catalogue entry's row title with its access
// key and dots, or the entry's own caption.
QString CaptionOf(const MenuItemSpec& Item);
// Whether the entry is on in this state.
bool EntryEnabled(const MenuItemSpec& Item, const MenuState& State);
// The entry that runs a command key; null when no entry does.
const MenuItemSpec* FindMenuItemByKey(const QString& Key);

// A caption without its access key, its dots and its blanks: "色调分离(&P)..."
// gives "色调分离", the name the command runs under.
QString CommandNameOfCaption(const QString& Caption);

// The keyboard accelerators as the start-up creates them: a key, the command
// number, and the entry it reaches, named by array and index as the table
// has always named them; the key reaches the command through the entry's
// key, and only while the entry is on. An empty Array reaches the Command
// given instead (toggling the ants), or nothing.
struct AcceleratorSpec {
    QKeyCombination Key;
    int Number = 0;
    QString Array;
    int Index = 0;
    QString Command = {};
};
const std::vector<AcceleratorSpec>& Accelerators();

// The key texts the captions carry after a tab.
struct CaptionKeySpec {
    QString Array;
    int Index = 0;
    QString KeyText;
};
const std::vector<CaptionKeySpec>& CaptionKeys();

// Number of entries of the recent files submenu.
inline constexpr int RecentFileEntries = 16;

} // namespace vm
