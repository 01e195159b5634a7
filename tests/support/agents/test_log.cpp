// Writes each of its arguments to the system log, as one message.

#include "platform/freedesktop/JournalSystemLog.h"

int main(int argc, char** argv) {
  vendril::JournalSystemLog log;
  for (int i = 1; i < argc; ++i) {
    log.write(argv[i]);
  }
  return 0;
}
