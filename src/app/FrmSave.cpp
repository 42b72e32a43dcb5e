#include "app/FrmSave.h"

#include "core/PixelFormat.h"
#include "core/SettingsStore.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSlider>
#include <QSpinBox>
#include <QVBoxLayout>

#include <algorithm>

namespace vm {

namespace {
const QString Section = QStringLiteral("SaveSetting");
constexpr int32_t DefaultJpegQuality = 85;

int32_t StoredInt(const char* key, int32_t def) {
    return GetSettingInt(SettingsRoot, Section, QString::fromLatin1(key), def);
}
} // namespace

bool FrmSave::HasOptions(int32_t format) {
    return format == RawBmp || format == RawJpeg || format == RawTiff;
}

QList<QPair<int32_t, QString>> FrmSave::TiffCompressions(uint32_t pixelFormat) {
    QList<QPair<int32_t, QString>> list = {
        {0, QStringLiteral("默认 (LZW)")}, {2, QStringLiteral("LZW")}, {6, QStringLiteral("不压缩")}};
    // The fax codings exist for black and white only.
    if (pixelFormat == PixelFormat1bppIndexed) {
        list.append({3, QStringLiteral("CCITT 3 组传真")});
        list.append({4, QStringLiteral("CCITT 4 组传真")});
        list.append({5, QStringLiteral("CCITT 游程编码")});
    }
    return list;
}

SaveOptions FrmSave::RememberedOptions(int32_t format, const CImage& image) {
    SaveOptions o = SaveOptions::Remembered(image);
    o.Quality = std::clamp(StoredInt("JpegSaveQuality", DefaultJpegQuality), 0, 100);
    o.Compression = StoredInt("TiffCompression", 0);
    bool known = false;
    for (const auto& c : TiffCompressions(image.PixelFormat))
        known = known || c.first == o.Compression;
    if (!known) o.Compression = 0;
    // The 16-bit layouts only fit a 16-bit block: any other depth would get a
    // header that points past its pixels.
    if (BitsPerPixel(image.PixelFormat) != 16) o.Bmp16Format = 0;
    if (format != RawBmp || image.RawImageFormat != RawBmp) {
        o.FileSystem = StoredInt("BmpFileSystem", 0) != 0 ? 1 : 0;
        o.FlipRow = StoredInt("BmpFlipRow", 0) != 0;
        o.Compress = StoredInt("BmpCompress", 0) != 0;
        o.Bmp16Format =
            BitsPerPixel(image.PixelFormat) == 16 ? std::clamp(StoredInt("Bmp16Format", 0), 0, 6) : 0;
    }
    return o;
}

FrmSave::FrmSave(int32_t format, const CImage& image, QWidget* parent)
    : QDialog(parent), format_(format), pixelFormat_(image.PixelFormat),
      options_(RememberedOptions(format, image)) {
    setWindowTitle(QStringLiteral("保存选项"));
    auto* outer = new QVBoxLayout(this);
    auto* form = new QFormLayout;
    outer->addLayout(form);
    const int bits = BitsPerPixel(pixelFormat_);
    if (format_ == RawBmp) {
        fileSystem_ = new QComboBox;
        fileSystem_->addItems({QStringLiteral("Windows"), QStringLiteral("OS/2")});
        fileSystem_->setCurrentIndex(options_.FileSystem ? 1 : 0);
        form->addRow(QStringLiteral("文件格式(&F):"), fileSystem_);
        flipRow_ = new QCheckBox(QStringLiteral("翻转行序(&R)"));
        flipRow_->setChecked(options_.FlipRow);
        form->addRow(flipRow_);
        compress_ = new QCheckBox(QStringLiteral("压缩 (RLE)(&C)"));
        compress_->setChecked(options_.Compress);
        compress_->setEnabled(bits == 4 || bits == 8);
        form->addRow(compress_);
        if (bits == 16) {
            bmp16_ = new QComboBox;
            bmp16_->addItems({QStringLiteral("X1 R5 G5 B5"), QStringLiteral("A1 R5 G5 B5"),
                              QStringLiteral("R5 G6 B5"), QStringLiteral("R5 G5 B6"),
                              QStringLiteral("R6 G5 B5"), QStringLiteral("X4 R4 G4 B4"),
                              QStringLiteral("A4 R4 G4 B4")});
            bmp16_->setCurrentIndex(std::clamp(options_.Bmp16Format, 0, 6));
            form->addRow(QStringLiteral("16位格式(&B):"), bmp16_);
        }
        const auto sync = [this] {
            // The OS/2 header knows neither the row order nor the compression.
            const bool windows = fileSystem_->currentIndex() == 0;
            flipRow_->setEnabled(windows);
            compress_->setEnabled(windows &&
                                  (BitsPerPixel(pixelFormat_) == 4 || BitsPerPixel(pixelFormat_) == 8));
            if (bmp16_) bmp16_->setEnabled(windows);
        };
        connect(fileSystem_, &QComboBox::currentIndexChanged, this, sync);
        sync();
    } else if (format_ == RawJpeg) {
        auto* row = new QHBoxLayout;
        quality_ = new QSlider(Qt::Horizontal);
        quality_->setRange(0, 100);
        qualityBox_ = new QSpinBox;
        qualityBox_->setRange(0, 100);
        row->addWidget(quality_, 1);
        row->addWidget(qualityBox_);
        connect(quality_, &QSlider::valueChanged, qualityBox_, &QSpinBox::setValue);
        connect(qualityBox_, &QSpinBox::valueChanged, quality_, &QSlider::setValue);
        quality_->setValue(options_.Quality);
        qualityBox_->setValue(options_.Quality);
        auto* label = new QLabel(QStringLiteral("品质(&Q):"));
        label->setBuddy(qualityBox_);
        form->addRow(label, row);
    } else if (format_ == RawTiff) {
        compression_ = new QComboBox;
        for (const auto& c : TiffCompressions(pixelFormat_)) {
            compression_->addItem(c.second, c.first);
            if (c.first == options_.Compression) compression_->setCurrentIndex(compression_->count() - 1);
        }
        form->addRow(QStringLiteral("压缩(&C):"), compression_);
    }
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->button(QDialogButtonBox::Ok)->setText(QStringLiteral("确定"));
    buttons->button(QDialogButtonBox::Cancel)->setText(QStringLiteral("取消"));
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    outer->addWidget(buttons);
}

SaveOptions FrmSave::Options() const {
    SaveOptions o = options_;
    if (fileSystem_) {
        o.FileSystem = fileSystem_->currentIndex();
        o.FlipRow = flipRow_->isChecked();
        o.Compress = compress_->isEnabled() && compress_->isChecked();
        o.Bmp16Format = bmp16_ ? bmp16_->currentIndex() : 0;
    }
    if (quality_) o.Quality = quality_->value();
    if (compression_) o.Compression = compression_->currentData().toInt();
    return o;
}

void FrmSave::accept() {
    const SaveOptions o = Options();
    if (format_ == RawBmp) {
        SaveSettingInt(SettingsRoot, Section, QStringLiteral("BmpFileSystem"), o.FileSystem);
        SaveSettingInt(SettingsRoot, Section, QStringLiteral("BmpFlipRow"), o.FlipRow ? 1 : 0);
        SaveSettingInt(SettingsRoot, Section, QStringLiteral("BmpCompress"), o.Compress ? 1 : 0);
        if (bmp16_) SaveSettingInt(SettingsRoot, Section, QStringLiteral("Bmp16Format"), o.Bmp16Format);
    } else if (format_ == RawJpeg) {
        SaveSettingInt(SettingsRoot, Section, QStringLiteral("JpegSaveQuality"), o.Quality);
    } else if (format_ == RawTiff) {
        SaveSettingInt(SettingsRoot, Section, QStringLiteral("TiffCompression"), o.Compression);
    }
    QDialog::accept();
}

} // namespace vm
