#pragma once
// The writer options of the families that have any: BMP (header flavour,
// row order, run-length coding, the 16-bit layout), JPEG (quality) and TIFF
// (compression). The choices are kept in the settings section "SaveSetting".
#include "core/Image.h"

#include <QDialog>

class QCheckBox;
class QComboBox;
class QSlider;
class QSpinBox;

namespace vm {

class FrmSave : public QDialog {
    Q_OBJECT
  public:
    FrmSave(int32_t Format, const CImage& Image, QWidget* Parent = nullptr);

    // Whether a family has options to show.
    static bool HasOptions(int32_t Format);
    // The options a plain save uses: what the picture brought from its file
    // for BMP, the kept choices for JPEG and TIFF.
    static SaveOptions RememberedOptions(int32_t Format, const CImage& Image);
    // The TIFF compressions the writer accepts for a picture's depth, with
    // their captions.
    static QList<QPair<int32_t, QString>> TiffCompressions(uint32_t PixelFormat);

    SaveOptions Options() const;
    void accept() override;

  private:
    int32_t format_;
    uint32_t pixelFormat_;
    SaveOptions options_;
    QComboBox* fileSystem_ = nullptr;
    QCheckBox* flipRow_ = nullptr;
    QCheckBox* compress_ = nullptr;
    QComboBox* bmp16_ = nullptr;
    QSlider* quality_ = nullptr;
    QSpinBox* qualityBox_ = nullptr;
    QComboBox* compression_ = nullptr;
};

} // namespace vm
