// system_draft.h - a system while its entry pages are open. The engine gets it when the last page is left with Next.
#pragma once

#include "engine/files/system_lists.h"
#include "engine/iir/prewarp.h"

#include <QString>

#include <map>
#include <memory>

namespace brisel {

class SystemDraft {
public:
  /// Begins with what the engine holds, or with the example of the option.
  SystemDraft(Domain domain, InputOption option);

  const Domain domain;
  InputOption option; // the first page of an analog system chooses it
  ZTransform mapping; // of an analog system
  bool maximum_gain;
  Prewarp prewarp;
  Coordinates coordinates = Coordinates::real_and_imaginary;

  /// Of the chosen option; each keeps its own while the pages are open.
  SystemLists &lists();
  std::optional<SystemComplaint> check(const SystemLists &typed);
  /// What the label of the domain says.
  QString domain_text() const;
  QString form_text() const;
  /// The largest |root| of the analog system, radians per second.
  double highest_root();

  /// Makes the system the one that the engine analyses.
  void use() const;

private:
  std::map<InputOption, SystemLists> lists_of_option;
  std::unique_ptr<SystemEntries> scratch; // three megabytes and more
};

} // namespace brisel
