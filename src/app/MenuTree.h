#pragma once
// The main window's menus as data: every array of entries with its captions,
// the operation each entry runs, the keyboard accelerators and the key texts
// the captions carry. FrmMain builds its menu bar from these tables; a later
// operation is wired by giving its row an operation key, nothing else.
#include <QKeyCombination>
#include <QString>
#include <QStringList>

#include <vector>

namespace vm {

struct MenuItemSpec {
    // The caption as the menu shows it; empty for a separator. A caption that
    // ends in a blank marks an entry that has no command behind it.
    QString Caption;
    // The key (or function name) of the catalogue row the entry runs; empty
    // when the entry is one of the window's own commands or is matched by its
    // caption (see FindOperationForEntry).
    QString Operation;
    // The array of the submenu the entry opens, if it opens one.
    QString Submenu;

    bool IsSeparator() const { return Caption.isEmpty(); }
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

// The arrays under the filter menu whose entries are filters: they set the
// name that "上次滤镜操作" repeats.
const QStringList& FilterFamilyArrays();

// A caption without its access key, its dots and its blanks: "色调分离(&P)..."
// gives "色调分离", the name the command runs under.
QString CommandNameOfCaption(const QString& Caption);

// The keyboard accelerators as the start-up creates them: a key, the command
// number, and the entry it reaches. An empty Array reaches nothing; the
// arrays "AntVisible" and "Repeat" name the two commands that are no entries
// of an array.
struct AcceleratorSpec {
    QKeyCombination Key;
    int Number = 0;
    QString Array;
    int Index = 0;
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
