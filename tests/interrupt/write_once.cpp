#include <cstdlib>
#include <iostream>
#include <string>

#include "platform/QELVARDOSFileTransaction.h"
#include "platform/QELVARDOSParallelFileLayer.h"

/// Replaces the files "0.xml", "1.xml" and so on in a folder by one text, in one transaction.
int main(int argc, char** argv) {
  if (argc != 5) {
    std::cerr << "usage: write_once FOLDER NUMBER-OF-FILES TEXT JOBS\n";
    return 2;
  }
  QELVARDOSParallelFileLayer layer(QELVARDOSFileLayer::System(), std::atoi(argv[4]));
  const QELVARDOSUseFileLayer use(layer);
  QELVARDOSFileTransaction transaction;
  bool done = true;
  for (int number = 0; number < std::atoi(argv[2]); ++number) {
    done = !transaction.Replace(std::string(argv[1]) + "/" + std::to_string(number) + ".xml", argv[3]) && done;
  }
  return transaction.Commit().empty() && done ? 0 : 1;
}
