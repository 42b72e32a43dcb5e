#pragma once
// The undo history of one document. Every step is a whole copy, of the image
// or of the selection, kept in one of two lists; a table of kinds says which
// list a step touched. It lives in memory only and is fed by the image's
// progress events and the selection's change events, which the owning canvas
// passes on: commands never write to it themselves.
//
// Writing a step is all or nothing: a copy that cannot be made throws
// std::bad_alloc before a list changes. Within a transaction the records the
// lists give up are kept, so that a command that fails after its step was
// written can put the lists back exactly as they were.
//
// Positions are 1-based, as the step table is: record n of a list is element
// n - 1 of its vector, and a position of 0 means the list is empty.
#include "core/Image.h"
#include "selection/Selection.h"

#include <memory>
#include <vector>

namespace vm {

enum HistoryStepKind : int32_t {
    HistoryStepSelection = 4, // the selection changed
    HistoryStepPixels = 6,    // pixels changed, same size and mode
    HistoryStepSize = 7,      // the size changed
    HistoryStepMode = 32,     // the colour mode changed
};

// The step a progress event of the given Kind records.
int32_t HistoryKindOfProgress(int ProgressKind);

class History {
  public:
    History();
    ~History();
    History(const History&) = delete;
    History& operator=(const History&) = delete;

    std::vector<std::unique_ptr<CImage>> HistoryImages;
    std::vector<std::unique_ptr<CSelection>> HistorySelections;
    int32_t HistoryImagePos = 0;
    int32_t HistorySelectionPos = 0;
    int32_t HistoryPos = 0;   // steps done at present
    int32_t HistoryCount = 0; // steps that exist, undone ones included
    bool NeedWriteToHistory = true;

    // The step limit; when not above 0 the setting MaxHistoryStep holds.
    int32_t MaxStepOverride = 0;
    int32_t MaxHistoryStep() const;

    // Kind of step Step (1-based); 0 for a step that does not exist.
    int32_t HistoryKind(int32_t Step) const;

    // ---- writing, in the order the events arrive
    // At an unrestrained ProgressStart: the first command of a document keeps
    // the picture as it was before.
    void RecordImageBase(const CImage& Present);
    // At an unrestrained ProgressEnd: cut the redo tail, make room, push the
    // present image as a step of the event's kind. A size step also makes sure
    // that the selection list has its base, from the selection as it still is.
    void PushImageStep(const CImage& Present, const CSelection& Selection, int ProgressKind);
    // After a size step the canvas makes a new selection of the new size; its
    // record keeps both lists in step with the table.
    void PushSizeSelectionRecord();
    // At a BeforeSelectionChanged: the selection as it stands becomes the
    // base, once.
    void RecordSelectionBase(const CSelection& Present);
    // At an unrestrained SelectionChanged: cut, make room, push.
    void PushSelectionStep(const CSelection& Present);

    void CutRedoTail();
    // At the limit the oldest step is forgotten. Only pixel and selection
    // steps give up their record; the record of a size or mode step stays in
    // its list.
    void RotateHistoryData();

    // The record that matches the present image after the last step or
    // restore; null while there is none.
    const CImage* PresentImageRecord() const;

    // ---- a command in progress
    // Begin may throw std::bad_alloc and then changes nothing. Until Commit or
    // Rollback the records that cutting and rotating drop stay alive; Rollback
    // puts back the lists, positions and kinds as they were at Begin, and
    // allocates nothing.
    void BeginTransaction();
    void CommitTransaction();
    void RollbackTransaction() noexcept;
    bool InTransaction() const { return transaction_ != nullptr; }
    // Whether a step was written since Begin.
    bool StepWrittenInTransaction() const;

    bool GetUndoState() const { return HistoryPos > 0; }
    bool GetRedoState() const { return HistoryPos < HistoryCount && HistoryPos >= 0; }

    // The data half of undo and redo. A pixel step copies the record over the
    // present block without allocating; size and mode steps replace Image by a
    // copy of the record (its listeners are the caller's to wire again), and a
    // size step also remakes Selection at the record's size. Image is left
    // attached to Selection. Answers the kind of the step, 0 when there was
    // none or its records are missing.
    int32_t Undo(std::unique_ptr<CImage>& Image, CSelection& Selection);
    int32_t Redo(std::unique_ptr<CImage>& Image, CSelection& Selection);

    // Forgets every record; the present image and selection are all that is left.
    void PurgeHistory();
    void DisposeAll() { PurgeHistory(); }

    // A record of a selection: a copy, or for a whole-image selection an empty
    // selection that only says so, which costs no mask memory.
    static std::unique_ptr<CSelection> SelectionRecord(const CSelection& Selection);
    // Puts a record back into the document's selection without raising its
    // events.
    static void ApplySelectionRecord(const CSelection& Record, CSelection& Target);

  private:
    struct Transaction;
    // Removes one record; inside a transaction an original record is kept
    // for a rollback instead of being destroyed.
    void DropImage(size_t Index);
    void DropSelection(size_t Index);
    void SetKind(int32_t Step, int32_t Kind);
    int32_t ApplyStep(int32_t Kind, bool Forward, std::unique_ptr<CImage>& Image, CSelection& Selection);
    std::vector<int32_t> kinds_; // kinds_[n - 1] is the kind of step n
    int64_t stepsWritten_ = 0;
    std::unique_ptr<Transaction> transaction_;
};

} // namespace vm
