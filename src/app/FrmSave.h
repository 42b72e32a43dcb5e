#pragma once
// The writer options of a family, built from the family's declarations: a
// slider with a box for a number, a check box for a switch, a list for a
// choice. The choices are kept in the settings section "SaveSetting".
#include "core/Image.h"

#include <QDialog>
#include <QMap>

class QWidget;

namespace vm {

struct FileFamily;
struct SaveOptionSpec;

class FrmSave : public QDialog {
    Q_OBJECT
  public:
    FrmSave(int32_t Format, const CImage& Image, QWidget* Parent = nullptr);

    // Whether a family has options to show for a picture.
    static bool HasOptions(int32_t Format, const CImage& Image);
    static bool HasOptions(int32_t Format);
    // The options a plain save uses: what the picture brought from its file
    // when it goes back to its family, else the kept choices, else defaults.
    static SaveOptions RememberedOptions(int32_t Format, const CImage& Image);

    SaveOptions Options() const;
    // The editor of an option, by key; null when the dialog does not show it.
    QWidget* Editor(const QString& Key) const { return editors_.value(Key); }
    void accept() override;

  private:
    int32_t Value(const SaveOptionSpec& Option) const;
    void SyncEnabled();

    const FileFamily* family_ = nullptr;
    SaveOptions options_;
    QMap<QString, QWidget*> editors_;
};

} // namespace vm
