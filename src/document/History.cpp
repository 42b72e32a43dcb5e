#include "document/History.h"

#include "core/AppSettings.h"
#include "core/ImageListener.h"

#include <algorithm>
#include <new>

namespace vm {

struct History::Transaction {
    // The lists as they were, in order; the records themselves stay owned by
    // the lists or, once dropped, by the kept lists.
    std::vector<CImage*> Images;
    std::vector<CSelection*> Selections;
    std::vector<std::unique_ptr<CImage>> KeptImages;
    std::vector<std::unique_ptr<CSelection>> KeptSelections;
    // Room reserved at Begin for rebuilding the lists, so that a rollback
    // never asks for memory.
    std::vector<std::unique_ptr<CImage>> SpareImages;
    std::vector<std::unique_ptr<CSelection>> SpareSelections;
    std::vector<int32_t> Kinds;
    int32_t ImagePos = 0, SelectionPos = 0, Pos = 0, Count = 0;
    int64_t StepsWritten = 0;
};

namespace {

// A copy that failed to get its block is an allocation failure, not an empty
// record: a step that could not be kept must not be written.
std::unique_ptr<CImage> CopyOf(const CImage& image) {
    std::unique_ptr<CImage> copy = image.CloneImage();
    if (image.Handle() && !copy->Handle()) throw std::bad_alloc();
    return copy;
}

template <class T>
void DropRecord(std::vector<std::unique_ptr<T>>& list, size_t index, const std::vector<T*>* originals,
                std::vector<std::unique_ptr<T>>* kept) {
    std::unique_ptr<T> record = std::move(list[index]);
    list.erase(list.begin() + static_cast<ptrdiff_t>(index));
    // Records written since the transaction began have nothing to go back to.
    if (originals && std::find(originals->begin(), originals->end(), record.get()) != originals->end())
        kept->push_back(std::move(record));
}

template <class T>
void RestoreList(std::vector<std::unique_ptr<T>>& list, const std::vector<T*>& originals,
                 std::vector<std::unique_ptr<T>>& kept, std::vector<std::unique_ptr<T>>& spare) noexcept {
    for (T* wanted : originals) {
        auto take = [&](std::vector<std::unique_ptr<T>>& from) {
            for (auto& record : from) {
                if (record.get() == wanted) {
                    spare.push_back(std::move(record));
                    return true;
                }
            }
            return false;
        };
        if (!take(list)) take(kept);
    }
    list.clear();
    list.swap(spare);
    kept.clear();
}

} // namespace

History::History() = default;

History::~History() {
    transaction_.reset();
    PurgeHistory();
}

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
    std::unique_ptr<CSelection> copy = selection.CloneSelection();
    if (selection.Pointer() && !copy->Pointer()) throw std::bad_alloc();
    return copy;
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
    std::unique_ptr<CImage> base = CopyOf(present);
    HistoryImages.reserve(HistoryImages.size() + 1);
    HistoryImages.push_back(std::move(base));
    HistoryImagePos = 1;
}

void History::DropImage(size_t index) {
    Transaction* t = transaction_.get();
    DropRecord(HistoryImages, index, t ? &t->Images : nullptr, t ? &t->KeptImages : nullptr);
}

void History::DropSelection(size_t index) {
    Transaction* t = transaction_.get();
    DropRecord(HistorySelections, index, t ? &t->Selections : nullptr, t ? &t->KeptSelections : nullptr);
}

void History::CutRedoTail() {
    while (static_cast<int32_t>(HistorySelections.size()) > std::max(HistorySelectionPos, 0))
        DropSelection(HistorySelections.size() - 1);
    while (static_cast<int32_t>(HistoryImages.size()) > std::max(HistoryImagePos, 0))
        DropImage(HistoryImages.size() - 1);
}

void History::RotateHistoryData() {
    const int32_t limit = MaxHistoryStep();
    // A loop rather than one step: a limit lowered while the program runs is
    // reached at the next command, not one step per command.
    while (HistoryPos >= limit && HistoryPos > 0) {
        switch (HistoryKind(1)) {
        case HistoryStepPixels:
            if (!HistoryImages.empty()) {
                DropImage(0);
                --HistoryImagePos;
            }
            break;
        case HistoryStepSelection:
            if (!HistorySelections.empty()) {
                DropSelection(0);
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
    // Everything that can fail comes first, while the lists are untouched.
    const int32_t kind = HistoryKindOfProgress(progressKind);
    std::unique_ptr<CImage> record = CopyOf(present);
    std::unique_ptr<CSelection> selectionBase;
    if (kind == HistoryStepSize && HistorySelectionPos == 0) selectionBase = SelectionRecord(selection);
    HistoryImages.reserve(HistoryImages.size() + 1);
    HistorySelections.reserve(HistorySelections.size() + 1);
    kinds_.reserve(static_cast<size_t>(std::max(HistoryPos, 0)) + 1);

    CutRedoTail();
    RotateHistoryData();
    HistoryImages.push_back(std::move(record));
    ++HistoryImagePos;
    ++HistoryPos;
    SetKind(HistoryPos, kind);
    HistoryCount = HistoryPos;
    kinds_.resize(static_cast<size_t>(HistoryCount));
    ++stepsWritten_;
    if (selectionBase) {
        HistorySelections.push_back(std::move(selectionBase));
        HistorySelectionPos = 1;
    }
}

void History::PushSizeSelectionRecord() {
    auto record = std::make_unique<CSelection>();
    HistorySelections.reserve(HistorySelections.size() + 1);
    HistorySelections.push_back(std::move(record));
    ++HistorySelectionPos;
}

void History::RecordSelectionBase(const CSelection& present) {
    if (HistorySelectionPos != 0) return;
    std::unique_ptr<CSelection> base = SelectionRecord(present);
    HistorySelections.reserve(HistorySelections.size() + 1);
    HistorySelections.push_back(std::move(base));
    HistorySelectionPos = 1;
}

void History::PushSelectionStep(const CSelection& present) {
    std::unique_ptr<CSelection> record = SelectionRecord(present);
    HistorySelections.reserve(HistorySelections.size() + 1);
    kinds_.reserve(static_cast<size_t>(std::max(HistoryPos, 0)) + 1);

    CutRedoTail();
    RotateHistoryData();
    HistorySelections.push_back(std::move(record));
    ++HistorySelectionPos;
    ++HistoryPos;
    SetKind(HistoryPos, HistoryStepSelection);
    HistoryCount = HistoryPos;
    kinds_.resize(static_cast<size_t>(HistoryCount));
    ++stepsWritten_;
}

const CImage* History::PresentImageRecord() const {
    if (HistoryImagePos < 1 || HistoryImagePos > static_cast<int32_t>(HistoryImages.size())) return nullptr;
    return HistoryImages[static_cast<size_t>(HistoryImagePos - 1)].get();
}

void History::BeginTransaction() {
    auto t = std::make_unique<Transaction>();
    for (const auto& record : HistoryImages)
        t->Images.push_back(record.get());
    for (const auto& record : HistorySelections)
        t->Selections.push_back(record.get());
    t->KeptImages.reserve(t->Images.size());
    t->KeptSelections.reserve(t->Selections.size());
    t->SpareImages.reserve(t->Images.size());
    t->SpareSelections.reserve(t->Selections.size());
    t->Kinds = kinds_;
    t->ImagePos = HistoryImagePos;
    t->SelectionPos = HistorySelectionPos;
    t->Pos = HistoryPos;
    t->Count = HistoryCount;
    t->StepsWritten = stepsWritten_;
    transaction_ = std::move(t);
}

void History::CommitTransaction() {
    transaction_.reset();
}

bool History::StepWrittenInTransaction() const {
    return transaction_ && transaction_->StepsWritten != stepsWritten_;
}

void History::RollbackTransaction() noexcept {
    if (!transaction_) return;
    const std::unique_ptr<Transaction> t = std::move(transaction_);
    RestoreList(HistoryImages, t->Images, t->KeptImages, t->SpareImages);
    RestoreList(HistorySelections, t->Selections, t->KeptSelections, t->SpareSelections);
    kinds_ = std::move(t->Kinds);
    HistoryImagePos = t->ImagePos;
    HistorySelectionPos = t->SelectionPos;
    HistoryPos = t->Pos;
    HistoryCount = t->Count;
    stepsWritten_ = t->StepsWritten;
}

namespace {

// Replaces the document's image by a copy of a record. The file name is the
// document's, not the record's: a save under another name since the record
// was taken must not be undone with the pixels.
void ReplaceImage(std::unique_ptr<CImage>& image, std::unique_ptr<CImage> fresh, CSelection& selection) {
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
            ReplaceImage(image, CopyOf(record), selection);
        }
        HistoryImagePos = imagePos;
        return kind;
    }
    case HistoryStepSize: {
        if (!InRange(imagePos, HistoryImages.size()) || !InRange(selectionPos, HistorySelections.size()))
            return 0;
        std::unique_ptr<CImage> fresh = CopyOf(*HistoryImages[static_cast<size_t>(imagePos - 1)]);
        if (!selection.CreateNewSelection(fresh->Width(), fresh->Height())) throw std::bad_alloc();
        HistoryImagePos = imagePos;
        HistorySelectionPos = selectionPos;
        ApplySelectionRecord(*HistorySelections[static_cast<size_t>(selectionPos - 1)], selection);
        ReplaceImage(image, std::move(fresh), selection);
        return kind;
    }
    case HistoryStepMode: {
        if (!InRange(imagePos, HistoryImages.size())) return 0;
        std::unique_ptr<CImage> fresh = CopyOf(*HistoryImages[static_cast<size_t>(imagePos - 1)]);
        HistoryImagePos = imagePos;
        ReplaceImage(image, std::move(fresh), selection);
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
    while (!HistoryImages.empty())
        DropImage(HistoryImages.size() - 1);
    while (!HistorySelections.empty())
        DropSelection(HistorySelections.size() - 1);
    kinds_.clear();
    HistoryImagePos = 0;
    HistorySelectionPos = 0;
    HistoryPos = 0;
    HistoryCount = 0;
}

} // namespace vm
