// lrd_floor REQUEST: recognises a request and prints it, as plainly as can be: what a whole process of lrd is held
// against.

#include <cstdio>

#include "benchmarks/Floors.h"

int main(int count, char** arguments) {
  pugi::xml_document request;
  if (count != 2 || !request.load_file(arguments[1])) {
    return 2;
  }
  Floors::Recognize(request);
  pugi::xml_writer_file output(stdout);
  request.save(output, "", pugi::format_raw);
  return std::fflush(stdout);
}
