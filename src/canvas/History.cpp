#include "canvas/History.h"

#include "core/AppSettings.h"
#include "core/ImageListener.h"

#include <algorithm>

namespace vm {

int32_t HistoryKindOfProgress(int progressKind) {
    switch (progressKind) {
    case ProgressSize:
        return HistoryStepSize;
    case ProgressMode:
        return HistoryStepMode;
    default:
        return HistoryStepPixels; // pixels, and results handed over by VirtualExecute
    }
}

int32_t History::MaxHistoryStep() const {
    const int32_t limit = MaxStepOverride > 0 ? MaxStepOverride : Globals().MaxHistoryStep;
    // A limit below one would leave no step to undo at all.
    return std::max(limit, 1);
}

int32_t History::HistoryKind(int32_t step) const {
    if (step < 1 || step > static_cast<int32_t>(kinds_.size())) return 0;
    return kinds_[static_cast<size_t>(step - 1)];
}

void History::SetKind(int32_t step, int32_t kind) {
    if (step < 1) return;
    if (static_cast<int32_t>(kinds_.size()) < step) kinds_.resize(static_cast<size_t>(step), 0);
    kinds_[static_cast<size_t>(step - 1)] = kind;
}

std::unique_ptr<CSelection> History::SelectionRecord(const CSelection& selection) {
    if (selection.UseDefaultSetting()) return std::make_unique<CSelection>(); // starts as "everything"
    return selection.CloneSelection();
}

void History::ApplySelectionRecord(const CSelection& record, CSelection& target) {
    const bool sameSize = record.Width() == target.Width() && record.Height() == target.Height();
    if (!record.UseDefaultSetting() && record.Pointer() && sameSize) {
        record.CloneToSelection(target);
        return;
    }
    // A record of the whole image (or one that no longer fits the canvas,
    // which the lists never hand out) puts back "everything".
    const bool restrained = target.RestrainEvent;
    target.RestrainEvent = true;
    target.SetUseDefaultSetting(true);
    target.RestrainEvent = restrained;
    target.UpdateSelectionRegion();
}

void History::RecordImageBase(const CImage& present) {
    if (!NeedWriteToHistory || HistoryImagePos != 0) return;
    HistoryImages.push_back(present.CloneImage());
    HistoryImagePos = 1;
}

void History::CutRedoTail() {
    if (HistorySelectionPos < static_cast<int32_t>(HistorySelections.size()))
        HistorySelections.resize(static_cast<size_t>(std::max(HistorySelectionPos, 0)));
    if (HistoryImagePos < static_cast<int32_t>(HistoryImages.size()))
        HistoryImages.resize(static_cast<size_t>(std::max(HistoryImagePos, 0)));
}

void History::RotateHistoryData() {
    const int32_t limit = MaxHistoryStep();
    // A loop rather than one step: a limit lowered while the program runs is
    // reached at the next command, not one step per command.
    while (HistoryPos >= limit && HistoryPos > 0) {
        switch (HistoryKind(1)) {
        case HistoryStepPixels:
            if (!HistoryImages.empty()) {
                HistoryImages.erase(HistoryImages.begin());
                --HistoryImagePos;
            }
            break;
        case HistoryStepSelection:
            if (!HistorySelections.empty()) {
                HistorySelections.erase(HistorySelections.begin());
                --HistorySelectionPos;
            }
            break;
        default:
            // Size and mode steps leave their records where they are: the
            // step is forgotten, the picture it kept becomes the oldest one.
            break;
        }
        --HistoryPos;
        HistoryCount = std::max(HistoryCount - 1, HistoryPos);
        if (!kinds_.empty()) kinds_.erase(kinds_.begin());
    }
}

void History::PushImageStep(const CImage& present, const CSelection& selection, int progressKind) {
    CutRedoTail();
    RotateHistoryData();
    HistoryImages.push_back(present.CloneImage());
    ++HistoryImagePos;
    ++HistoryPos;
    const int32_t kind = HistoryKindOfProgress(progressKind);
    SetKind(HistoryPos, kind);
    HistoryCount = HistoryPos;
    kinds_.resize(static_cast<size_t>(HistoryCount));
    if (kind == HistoryStepSize && HistorySelectionPos == 0) {
        HistorySelections.push_back(SelectionRecord(selection));
        HistorySelectionPos = 1;
    }
}

void History::PushSizeSelectionRecord() {
    HistorySelections.push_back(std::make_unique<CSelection>());
    ++HistorySelectionPos;
}

void History::RecordSelectionBase(const CSelection& present) {
    if (HistorySelectionPos != 0) return;
    HistorySelections.push_back(SelectionRecord(present));
    HistorySelectionPos = 1;
}

void History::PushSelectionStep(const CSelection& present) {
    CutRedoTail();
    RotateHistoryData();
    HistorySelections.push_back(SelectionRecord(present));
    ++HistorySelectionPos;
    ++HistoryPos;
    SetKind(HistoryPos, HistoryStepSelection);
    HistoryCount = HistoryPos;
    kinds_.resize(static_cast<size_t>(HistoryCount));
}

namespace {

// Replaces the document's image by a copy of a record. The file name is the
// document's, not the record's: a save under another name since the record
// was taken must not be undone with the pixels.
void ReplaceImage(std::unique_ptr<CImage>& image, const CImage& record, CSelection& selection) {
    std::unique_ptr<CImage> fresh = record.CloneImage();
    if (image) fresh->FileName = image->FileName;
    image = std::move(fresh);
    image->SetSelection(&selection);
}

bool InRange(int32_t pos, size_t size) {
    return pos >= 1 && pos <= static_cast<int32_t>(size);
}

} // namespace

int32_t History::ApplyStep(int32_t kind, bool forward, std::unique_ptr<CImage>& image,
                           CSelection& selection) {
    const int32_t delta = forward ? 1 : -1;
    const int32_t imagePos = HistoryImagePos + delta;
    const int32_t selectionPos = HistorySelectionPos + delta;
    switch (kind) {
    case HistoryStepSelection: {
        if (!InRange(selectionPos, HistorySelections.size())) return 0;
        HistorySelectionPos = selectionPos;
        ApplySelectionRecord(*HistorySelections[static_cast<size_t>(selectionPos - 1)], selection);
        if (image) image->UpdateSelectionDealRect();
        return kind;
    }
    case HistoryStepPixels: {
        if (!InRange(imagePos, HistoryImages.size()) || !image) return 0;
        HistoryImagePos = imagePos;
        const CImage& record = *HistoryImages[static_cast<size_t>(imagePos - 1)];
        const bool sameBlock = record.Width() == image->Width() && record.Height() == image->Height() &&
                               record.PixelFormat == image->PixelFormat &&
                               record.BlockSize() == image->BlockSize();
        if (sameBlock) {
            record.CloneToImage(*image);
            image->SetPaletteData(record.GetPaletteData());
        } else {
            // Only a forgotten size or mode step in between can leave a pixel
            // record of another shape; copying over would run past the block.
            ReplaceImage(image, record, selection);
        }
        return kind;
    }
    case HistoryStepSize: {
        if (!InRange(imagePos, HistoryImages.size()) || !InRange(selectionPos, HistorySelections.size()))
            return 0;
        HistoryImagePos = imagePos;
        HistorySelectionPos = selectionPos;
        const CImage& record = *HistoryImages[static_cast<size_t>(imagePos - 1)];
        selection.CreateNewSelection(record.Width(), record.Height());
        ApplySelectionRecord(*HistorySelections[static_cast<size_t>(selectionPos - 1)], selection);
        ReplaceImage(image, record, selection);
        return kind;
    }
    case HistoryStepMode: {
        if (!InRange(imagePos, HistoryImages.size())) return 0;
        HistoryImagePos = imagePos;
        ReplaceImage(image, *HistoryImages[static_cast<size_t>(imagePos - 1)], selection);
        return kind;
    }
    default:
        return 0;
    }
}

int32_t History::Undo(std::unique_ptr<CImage>& image, CSelection& selection) {
    if (HistoryPos <= 0) return 0;
    const int32_t kind = ApplyStep(HistoryKind(HistoryPos), false, image, selection);
    if (kind) --HistoryPos;
    return kind;
}

int32_t History::Redo(std::unique_ptr<CImage>& image, CSelection& selection) {
    if (!GetRedoState()) return 0;
    const int32_t kind = ApplyStep(HistoryKind(HistoryPos + 1), true, image, selection);
    if (kind) ++HistoryPos;
    return kind;
}

void History::PurgeHistory() {
    HistoryImages.clear();
    HistorySelections.clear();
    kinds_.clear();
    HistoryImagePos = 0;
    HistorySelectionPos = 0;
    HistoryPos = 0;
    HistoryCount = 0;
}

} // namespace vm
