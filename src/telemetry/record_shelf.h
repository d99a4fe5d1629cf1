// Keeps the record that was let go last, so that the next one to be filled finds its texts and nodes in place: copying
// a status into a fresh record allocates some fifteen times, into a used one hardly ever.
//
// Threads: every operation, and the end of a record, from any thread. Ownership: the shelf lives as long as it or a
// record of it is in use; it keeps one record at most.
#ifndef TELEMETRY_RECORD_SHELF_H
#define TELEMETRY_RECORD_SHELF_H

#include <memory>
#include <utility>

#include "sync/mutex.h"

namespace qv_data_interface {

template <class Record>
class RecordShelf {
 public:
  // A record that nobody else refers to, with whatever in it: to be overwritten as a whole.
  std::shared_ptr<Record> TakeOne() {
    std::unique_ptr<Record> record = place->Exchange(nullptr);
    if (!record) record = std::make_unique<Record>();
    return std::shared_ptr<Record>(record.release(),
                                   [place = place](Record* done) { place->Exchange(std::unique_ptr<Record>(done)); });
  }

 private:
  class Place {
   public:
    std::unique_ptr<Record> Exchange(std::unique_ptr<Record> other) {
      const MutexLock lock(mutex);
      spare.swap(other);
      return other;
    }

   private:
    Mutex mutex;
    std::unique_ptr<Record> spare QV_GUARDED_BY(mutex);
  };

  const std::shared_ptr<Place> place = std::make_shared<Place>();
};

}  // namespace qv_data_interface

#endif
