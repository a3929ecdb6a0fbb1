#pragma once

#include <unistd.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "QXPlatform/files/FileDescriptor.h"
#include "QXPlatform/foundation/Result.h"

namespace QXAgent {

// What a program is started with.
struct ProgramStart {
  std::filesystem::path program;
  std::vector<std::string> arguments;
  std::vector<std::string> environment;  // NAME=VALUE, in place of what this process has under the name
  std::optional<std::string> input = std::nullopt;  // all that it reads; else what is written while it runs
  int errorOutput = STDERR_FILENO;                  // where its standard error goes
};

// A program that runs. One thread.
class Program {
 public:
  virtual ~Program() = default;

  // Becomes readable when the program has exited; -1 when its exit shows by the end of its output alone.
  virtual int exitDescriptor() const = 0;
  // Ends it at once.
  virtual void kill() = 0;
  // Lets it go on when this object goes.
  virtual void release() = 0;
  // How it exited, as waitpid() says; nothing while it runs, or when it is not this process's child.
  virtual std::optional<int> exitStatus() = 0;
  // For measuring; 0 when it is not known.
  virtual int processId() const = 0;
};

struct StartedProgram {
  std::unique_ptr<Program> program;
  QXPlatform::FileDescriptor input;   // what is written here, it reads; does not block
  QXPlatform::FileDescriptor output;  // what it prints; does not block
};

// Two pipes, of which the program gets the ends that are not in StartedProgram.
struct ProgramPipes {
  static QXPlatform::Result<ProgramPipes> open();

  QXPlatform::FileDescriptor ourInput;
  QXPlatform::FileDescriptor ourOutput;
  QXPlatform::FileDescriptor itsInput;
  QXPlatform::FileDescriptor itsOutput;
};

// Starts a child of this process. Killed, if need be, and waited for when the Program goes, unless it was
// released.
QXPlatform::Result<StartedProgram> startChild(const ProgramStart& start);

// Starts a program that lives on by itself, with nothing to read and its output going to standard error; the
// program may be a name to be looked for. Returns its process id, which is to be waited for.
QXPlatform::Result<int> startDetached(const ProgramStart& start);

// Runs a program that has nothing to read and whose output nobody wants until it exits. Returns how it
// exited, as waitpid() says.
QXPlatform::Result<int> runToItsEnd(const ProgramStart& start);

}  // namespace QXAgent
