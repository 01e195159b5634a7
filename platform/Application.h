#pragma once

namespace vendril {

/// What the application tells its delegate; always on the main thread.
class ApplicationDelegate {
 public:
  virtual ~ApplicationDelegate() = default;

  /// Before any event is delivered.
  virtual void applicationWillFinishLaunching() = 0;
  /// After a link that started the application has been delivered, before all other events.
  virtual void applicationDidFinishLaunching() = 0;
  /// After the last event.
  virtual void applicationWillTerminate() = 0;
};

/// The running program and its event loop.
class Application {
 public:
  virtual ~Application() = default;

  /// Calls the delegate at the moments that its operations name and runs the event loop until the
  /// application terminates. Returns the exit status of the process.
  virtual int main(int argc, char** argv, ApplicationDelegate& delegate) = 0;

  /// Asks the application to terminate; the event loop ends soon afterwards. Main thread only.
  virtual void terminate() = 0;
};

}  // namespace vendril
