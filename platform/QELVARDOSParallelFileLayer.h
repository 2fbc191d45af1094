#pragma once

#include <memory>

#include "platform/QELVARDOSFileLayer.h"
#include "platform/ZYMExport.h"

/// Has looks that were told of taken ahead of time, and files created and renamed, several side by side, in threads of
/// its own: for disks where each step is waited for, as on a file server. It goes in front of the layer whose Stat,
/// Read, ReadWithFacts, List, WriteAllNew, RenameAll and MakeFoldersDurable it so calls, and BeginLookups and
/// EndLookups in each of its threads; that layer must bear these from several threads at once, as the system's own
/// does. All else is done in the thread of the caller.
///
/// What a look saw is handed out once, to the thread that told of it and before its outermost EndLookups: so it is
/// never older than the call that asks. Whatever is changed through this layer loses what was seen there and below.
/// What was not told of, or not begun when it is asked for, is looked at in the caller's thread. Where several records
/// of a folder were missing, the folder is listed, and what the listing does not name is missing too.
///
/// The threads end with the outermost EndLookups of the caller, at the latest with the layer. At most 16 MiB of content
/// are held. Several threads may call the layer at once.
class ZYM_EXPORT QELVARDOSParallelFileLayer : public QELVARDOSFileLayerFilter {
 public:
  static constexpr int MostJobs = 32;
  /// Steps are timed: where they are slow others go on beside them, for as long as it helps.
  static constexpr int JobsFoundOut = 0;

  /// jobs: how many steps may go on at once, MostJobs at most; 1: no thread is ever started.
  explicit QELVARDOSParallelFileLayer(QELVARDOSFileLayer& next, int jobs = JobsFoundOut);
  ~QELVARDOSParallelFileLayer() override;

  QELVARDOSFileFacts Stat(const std::string& path) override;
  std::error_code Read(const std::string& path, std::string& bytes, std::uint64_t atMost) override;
  std::error_code ReadWithFacts(const std::string& path, std::string& bytes, std::uint64_t atMost,
                                QELVARDOSFileFacts& facts) override;
  void BeginLookups() override;
  void EndLookups() override;
  std::error_code MakeFolder(const std::string& path) override;
  std::error_code HideFolder(const std::string& path) override;
  std::error_code WriteNew(const std::string& path, std::string_view bytes, const std::string& like) override;
  void WriteAllNew(std::span<QELVARDOSNewFile> files) override;
  std::vector<std::error_code> MakeFoldersDurable(const std::vector<std::string>& folders) override;
  std::error_code Rename(const std::string& from, const std::string& to) override;
  void RenameAll(std::span<QELVARDOSFileRenaming> files) override;
  std::error_code Remove(const std::string& path) override;
  bool WantsNotice() const override;
  void LookAhead(std::vector<QELVARDOSFileLook>&& looks) override;

 private:
  class Callers;

  /// Null when there is but one job.
  std::unique_ptr<Callers> callers_;
};
