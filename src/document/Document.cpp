#include "document/Document.h"

#include "core/StartUp.h"

#include <QPainter>

#include <cstring>
#include <exception>
#include <new>

namespace vm {

namespace {

// Everything of an image but its pixels, as a command may change it.
struct ImageFields {
    int32_t Left = 0, Top = 0;
    float Resolution = 72.0f;
    uint32_t PixelFormat = 0;
    QString FileName;
    uint32_t RawPixelFormat = 0;
    int32_t RawImageFormat = 0;
    bool RleCompress = false, BmpFlipRow = false;
    int32_t BmpFileSystem = 0, Bmp16PixelFormat = 0;
    QString AuthorInformation, FileComment;
    int32_t RawDdsFileFormat = 0, PnmStoreWay = 0, PropertyCount = 0;
    bool RestrainProgress = false;
    PaletteData Palette;
    QByteArray Properties;

    explicit ImageFields(const CImage& i)
        : Left(i.Left), Top(i.Top), Resolution(i.Resolution), PixelFormat(i.PixelFormat),
          FileName(i.FileName), RawPixelFormat(i.RawPixelFormat), RawImageFormat(i.RawImageFormat),
          RleCompress(i.RleCompress), BmpFlipRow(i.BmpFlipRow), BmpFileSystem(i.BmpFileSystem),
          Bmp16PixelFormat(i.Bmp16PixelFormat), AuthorInformation(i.AuthorInformation),
          FileComment(i.FileComment), RawDdsFileFormat(i.RawDdsFileFormat), PnmStoreWay(i.PnmStoreWay),
          PropertyCount(i.PropertyCount), RestrainProgress(i.RestrainProgress), Palette(i.Palette()),
          Properties(i.PropertyBuffer()) {}

    // Strings and byte arrays are shared, not copied: nothing here allocates.
    void PutBack(CImage& i) const noexcept {
        i.Left = Left;
        i.Top = Top;
        i.Resolution = Resolution;
        i.PixelFormat = PixelFormat;
        i.FileName = FileName;
        i.RawPixelFormat = RawPixelFormat;
        i.RawImageFormat = RawImageFormat;
        i.RleCompress = RleCompress;
        i.BmpFlipRow = BmpFlipRow;
        i.BmpFileSystem = BmpFileSystem;
        i.Bmp16PixelFormat = Bmp16PixelFormat;
        i.AuthorInformation = AuthorInformation;
        i.FileComment = FileComment;
        i.RawDdsFileFormat = RawDdsFileFormat;
        i.PnmStoreWay = PnmStoreWay;
        i.PropertyCount = PropertyCount;
        i.RestrainProgress = RestrainProgress;
        i.SetPaletteBytes(Palette);
        i.SetPropertyBuffer(Properties);
    }
};

struct SelectionFields {
    int32_t Left = 0, Top = 0, FeatherRadius = 0, SelectionMode = 0;
    bool Visible = true, RestrainEvent = false, AntiAlias = true, UseDefaultSetting = true;

    explicit SelectionFields(const CSelection& s)
        : Left(s.Left), Top(s.Top), FeatherRadius(s.FeatherRadius), SelectionMode(s.SelectionMode),
          Visible(s.Visible), RestrainEvent(s.RestrainEvent), AntiAlias(s.AntiAlias()),
          UseDefaultSetting(s.UseDefaultSetting()) {}

    void PutBack(CSelection& s) const noexcept {
        s.Left = Left;
        s.Top = Top;
        s.FeatherRadius = FeatherRadius;
        s.SelectionMode = SelectionMode;
        s.Visible = Visible;
        s.RestrainEvent = RestrainEvent;
        s.SetAntiAlias(AntiAlias);
    }
};

bool SamePixels(const CImage& a, const CImage& b) {
    if (a.Width() != b.Width() || a.Height() != b.Height() || a.PixelFormat != b.PixelFormat ||
        a.BlockSize() != b.BlockSize() || !a.Handle() || !b.Handle())
        return false;
    return std::memcmp(a.Pointer(), b.Pointer(), a.BlockSize()) == 0;
}

bool SameMask(const CSelection& record, const CSelection& present) {
    if (record.UseDefaultSetting() || present.UseDefaultSetting())
        return record.UseDefaultSetting() && present.UseDefaultSetting();
    return record.Pointer() && present.Pointer() && record.Width() == present.Width() &&
           record.Height() == present.Height() &&
           std::memcmp(record.Pointer(), present.Pointer(), present.BufferSize()) == 0;
}

const CSelection* PresentSelectionRecord(const History& h) {
    if (h.HistorySelectionPos < 1 || h.HistorySelectionPos > static_cast<int32_t>(h.HistorySelections.size()))
        return nullptr;
    return h.HistorySelections[static_cast<size_t>(h.HistorySelectionPos - 1)].get();
}

void MakeWhole(CSelection& s) {
    const bool restrained = s.RestrainEvent;
    s.RestrainEvent = true;
    s.SetUseDefaultSetting(true);
    s.RestrainEvent = restrained;
}

} // namespace

struct Document::Checkpoint {
    bool Explicit = false; // begun by Run or a history step rather than by an event
    int Uncaught = 0;
    int Depth = 0;
    bool ImageChangedWas = false;
    bool AddedBase = false;
    ImageFields Fields;
    // What the pixels were: a history record that holds them, or a copy.
    const CImage* ImageSource = nullptr;
    std::unique_ptr<CImage> ImageCopy;
    SelectionFields Selection;
    const CSelection* SelectionSource = nullptr;
    std::unique_ptr<CSelection> SelectionCopy;
    // The selection object a new size replaced; it goes back untouched.
    std::unique_ptr<CSelection> ReplacedSelection;

    Checkpoint(const CImage& image, const CSelection& selection) : Fields(image), Selection(selection) {}
};

Document::Document() = default;

Document::~Document() {
    DisposeAll();
}

// ------------------------------------------------------------------ contents

void Document::Detach() {
    if (checkpoint_) {
        checkpoint_.reset();
        history_.CommitTransaction();
    }
    depth_ = 0;
    history_.DisposeAll();
    if (image_) image_->RemoveListener(this);
    if (selection_) selection_->RemoveListener(this);
    image_.reset();
    selection_.reset();
    ImageChanged = false;
}

void Document::DisposeAll() {
    Detach();
}

void Document::Attach(std::unique_ptr<CImage> image, std::unique_ptr<CSelection> selection) {
    Detach();
    if (!image) return;
    const int32_t w = image->Width(), h = image->Height();
    if (!selection || selection->Width() != w || selection->Height() != h) {
        selection = std::make_unique<CSelection>();
        selection->CreateNewSelection(w, h);
        // A new mask is zero; "everything" is all 255 at rest.
        MakeWhole(*selection);
    }
    image->AddListener(this);
    selection->AddListener(this);
    image_ = std::move(image);
    selection_ = std::move(selection);
    image_->SetSelection(selection_.get());
}

bool Document::LoadPictureFromFile(const QString& fileName, int32_t frameIndex) {
    Detach();
    auto image = std::make_unique<CImage>();
    if (!image->LoadPictureFromFile(fileName, frameIndex)) return false;
    Attach(std::move(image));
    return true;
}

bool Document::LoadPictureFromStdPicture(const QImage& picture) {
    Detach();
    auto image = std::make_unique<CImage>();
    if (!image->LoadPictureFromStdPicture(picture)) return false;
    Attach(std::move(image));
    return true;
}

bool Document::CopyFrom(const Document& other) {
    if (&other == this || !other.HasImage()) return false;
    // Both copies are made before this document lets go of anything.
    std::unique_ptr<CImage> image = other.image_->CloneImage();
    if (!image->Handle()) return false;
    std::unique_ptr<CSelection> selection;
    if (other.selection_) {
        selection = other.selection_->CloneSelection();
        if (other.selection_->Pointer() && !selection->Pointer()) return false;
    }
    Attach(std::move(image), std::move(selection));
    return true;
}

// ------------------------------------------------------------------ commands

bool Document::RunOperation(const Operation& row, const Params& values) {
    if (!row.Run) return false;
    return Run([&](CImage& image) { return row.Run(image, row.WithDefaults(values)); });
}

bool Document::SelectAll() {
    return selection_ && selection_->SelectAll();
}

bool Document::InvertSelect() {
    return selection_ && selection_->InvertSelect();
}

bool Document::CancelSelect() {
    if (!selection_) return false;
    // Letting go raises only the change; the step still needs its base, as
    // any other selection command has it.
    BeforeSelectionChanged(false);
    selection_->SetUseDefaultSetting(true);
    return true;
}

bool Document::SelectSimilar(int32_t tolerance) {
    if (!HasImage() || !selection_) return false;
    const uint32_t f = image_->PixelFormat;
    if (f == PixelFormat24bppRGB || f == PixelFormat32bppARGB)
        return selection_->SelectedSimilar(*image_, tolerance);
    QImage shown(Width(), Height(), QImage::Format_RGB32);
    if (shown.isNull()) throw std::bad_alloc();
    shown.fill(Qt::white);
    {
        QPainter p(&shown);
        image_->Render(p, 0, 0);
    }
    CImage colours;
    if (!colours.LoadPictureFromStdPicture(shown.convertToFormat(QImage::Format_RGB888))) return false;
    return selection_->SelectedSimilar(colours, tolerance);
}

// ------------------------------------------------------------------ rollback

void Document::BeginCheckpoint(bool isExplicit, bool mayAddBase) {
    auto c = std::make_unique<Checkpoint>(*image_, *selection_);
    c->Explicit = isExplicit;
    c->Uncaught = std::uncaught_exceptions();
    c->Depth = depth_;
    c->ImageChangedWas = ImageChanged;

    const CImage* record = history_.PresentImageRecord();
    if (record && SamePixels(*record, *image_)) {
        c->ImageSource = record;
    } else if (mayAddBase && history_.NeedWriteToHistory && history_.HistoryImagePos == 0 &&
               history_.HistoryImages.empty()) {
        // The base the first command keeps anyway serves the rollback too.
        // A rollback takes it away again.
        history_.RecordImageBase(*image_);
        c->AddedBase = true;
        c->ImageSource = history_.PresentImageRecord();
    } else {
        c->ImageCopy = image_->CloneImage();
        if (!c->ImageCopy->Handle()) throw std::bad_alloc();
    }
    try {
        if (!selection_->UseDefaultSetting()) {
            const CSelection* selectionRecord = PresentSelectionRecord(history_);
            if (selectionRecord && SameMask(*selectionRecord, *selection_)) {
                c->SelectionSource = selectionRecord;
            } else {
                c->SelectionCopy = selection_->CloneSelection();
                if (!c->SelectionCopy->Pointer()) throw std::bad_alloc();
            }
        }
        // The records a rollback reads are the transaction's originals: they
        // stay alive whatever the command drops.
        history_.BeginTransaction();
    } catch (...) {
        if (c->AddedBase) DropAddedBase();
        throw;
    }
    checkpoint_ = std::move(c);
}

void Document::DropAddedBase() noexcept {
    if (!history_.HistoryImages.empty()) history_.HistoryImages.pop_back();
    history_.HistoryImagePos = 0;
}

void Document::CommitCheckpoint(bool dropUnusedBase) {
    if (!checkpoint_) return;
    const bool drop = dropUnusedBase && checkpoint_->AddedBase && !history_.StepWrittenInTransaction();
    checkpoint_.reset();
    if (drop) {
        history_.RollbackTransaction();
        DropAddedBase();
    } else {
        history_.CommitTransaction();
    }
}

void Document::RollBack() noexcept {
    if (!checkpoint_ || !image_ || !selection_) return;
    const std::unique_ptr<Checkpoint> c = std::move(checkpoint_);

    if (c->ReplacedSelection) {
        std::swap(selection_, c->ReplacedSelection);
        c->ReplacedSelection->RemoveListener(this);
    }
    CSelection& selection = *selection_;
    if (c->Selection.UseDefaultSetting) {
        MakeWhole(selection);
    } else if (const CSelection* source = c->SelectionCopy ? c->SelectionCopy.get() : c->SelectionSource) {
        source->CloneToSelection(selection);
    }
    c->Selection.PutBack(selection);

    CImage& image = *image_;
    const CImage* source = c->ImageCopy ? c->ImageCopy.get() : c->ImageSource;
    if (source && source->Handle()) {
        try {
            const bool sameBlock = image.Handle() && image.Width() == source->Width() &&
                                   image.Height() == source->Height() &&
                                   image.BlockSize() == source->BlockSize();
            // Only a command that made a block of another size must ask for
            // memory here, and its own block was given back as it unwound.
            if (!sameBlock)
                image.CreateNewImage(source->Width(), source->Height(), BitsPerPixel(source->PixelFormat));
            if (image.Handle() && image.BlockSize() == source->BlockSize())
                std::memcpy(image.Pointer(), source->Pointer(), source->BlockSize());
        } catch (...) {
        }
    }
    c->Fields.PutBack(image);
    // Last: until now the records read above were kept alive by it.
    history_.RollbackTransaction();
    if (c->AddedBase) DropAddedBase();
    ImageChanged = c->ImageChangedWas;
    depth_ = c->Depth;
    try {
        selection.UpdateSelectionRegion();
        image.SetSelection(&selection);
    } catch (...) {
    }
    if (listener_) {
        try {
            listener_->CommandRolledBack();
        } catch (...) {
        }
    }
}

void Document::TakeBackUnfinished() noexcept {
    if (checkpoint_ && !checkpoint_->Explicit && depth_ > checkpoint_->Depth && !IsUnwinding()) RollBack();
}

bool Document::IsUnwinding() const {
    return std::uncaught_exceptions() > (checkpoint_ ? checkpoint_->Uncaught : 0);
}

// ------------------------------------------------------------------ history

int32_t Document::Undo() {
    return Restore(false);
}

int32_t Document::Redo() {
    return Restore(true);
}

int32_t Document::Restore(bool forward) {
    if (!HasImage() || !selection_) return 0;
    TakeBackUnfinished();
    if (checkpoint_ || !(forward ? history_.GetRedoState() : history_.GetUndoState())) return 0;
    BeginCheckpoint(true, false);
    int32_t kind = 0;
    try {
        CImage* before = image_.get();
        kind = forward ? history_.Redo(image_, *selection_) : history_.Undo(image_, *selection_);
        // Size and mode steps put a new image object in place.
        if (image_.get() != before) image_->AddListener(this);
    } catch (...) {
        RollBack();
        throw;
    }
    if (kind == HistoryStepMode) ImageChanged = true;
    CommitCheckpoint(false);
    if (kind && listener_) listener_->StepRestored(kind);
    return kind;
}

void Document::PurgeHistory() {
    TakeBackUnfinished();
    if (checkpoint_) return; // not in the middle of a command
    history_.PurgeHistory();
}

// ------------------------------------------------------------------ events

void Document::ProgressStart(bool restrain, const QString&, int) {
    if (!restrain && depth_ == 0 && !checkpoint_ && takesBackFailures_ && history_.NeedWriteToHistory &&
        image_ && selection_)
        BeginCheckpoint(false, true);
    if (!restrain && history_.NeedWriteToHistory && image_) history_.RecordImageBase(*image_);
    ++depth_;
    if (!restrain) commandStart_ = GetTimeStamp();
    if (listener_) listener_->OperationStarted();
}

void Document::ProgressEnd(bool restrain, const QString& name, int kind, const QString& extra) {
    if (depth_ > 0) --depth_;
    const bool ownsCheckpoint = checkpoint_ && !checkpoint_->Explicit && depth_ <= checkpoint_->Depth;
    if (IsUnwinding()) {
        // The frame of a failing command closes as the exception passes: no
        // step for it. A command begun by Run is taken back by Run.
        if (ownsCheckpoint) RollBack();
        if (listener_) {
            try {
                listener_->OperationEnded();
            } catch (...) {
            }
        }
        return;
    }
    if (!restrain && image_ && selection_) {
        try {
            WriteStep(kind);
        } catch (...) {
            if (ownsCheckpoint) RollBack();
            if (listener_) listener_->OperationEnded();
            throw;
        }
        if (ownsCheckpoint) CommitCheckpoint(false);
        if (listener_)
            listener_->CommandFinished(name, kind, extra,
                                       static_cast<int64_t>(GetTimeStamp() - commandStart_));
    } else if (ownsCheckpoint) {
        CommitCheckpoint(true);
    }
    if (listener_) listener_->OperationEnded();
}

void Document::WriteStep(int kind) {
    const bool record = history_.NeedWriteToHistory;
    if (kind == ProgressSize) {
        // The selection of the new size is made before anything changes, and
        // the old one is kept until the command is through.
        auto fresh = std::make_unique<CSelection>();
        if (!fresh->CreateNewSelection(image_->Width(), image_->Height())) throw std::bad_alloc();
        MakeWhole(*fresh);
        fresh->AddListener(this);
        if (record) history_.PushImageStep(*image_, *selection_, kind);
        if (record) ImageChanged = true;
        std::unique_ptr<CSelection> old = std::exchange(selection_, std::move(fresh));
        if (checkpoint_ && !checkpoint_->ReplacedSelection)
            checkpoint_->ReplacedSelection = std::move(old);
        else
            old->RemoveListener(this);
        image_->SetSelection(selection_.get());
        selection_->UpdateSelectionRegion();
        image_->UpdateSelectionDealRect();
        if (record) history_.PushSizeSelectionRecord();
        return;
    }
    if (record) {
        history_.PushImageStep(*image_, *selection_, kind);
        ImageChanged = true;
    }
    if (kind == ProgressMode) {
        image_->SetSelection(selection_.get());
        image_->UpdateSelectionDealRect();
    }
}

void Document::BeforeSelectionChanged(bool nested) {
    if (nested || !selection_) return;
    history_.RecordSelectionBase(*selection_);
    selectionStart_ = GetTimeStamp();
}

void Document::SelectionChanged(bool nested) {
    if (nested || !selection_ || !image_) return;
    image_->UpdateSelectionDealRect();
    history_.PushSelectionStep(*selection_);
    if (listener_) listener_->SelectionStepFinished(static_cast<int64_t>(GetTimeStamp() - selectionStart_));
}

} // namespace vm
