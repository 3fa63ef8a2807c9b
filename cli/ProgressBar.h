// Progress of a job on the terminal: a bar redrawn in place when the output is a terminal,
// plain lines otherwise (so logs and pipes stay readable).
#pragma once

#include <iosfwd>
#include <string>

namespace plattmix::cli {

class ProgressBar {
  public:
    ProgressBar(std::ostream& out, bool terminal);

    // What is being worked on ("Track03.wav"); starts a new bar.
    void Begin(const std::string& label);
    void Update(int percent);
    // The outcome of the current item, on a line of its own.
    void Finish(const std::string& text);

  private:
    std::ostream& out_;
    bool terminal_;
    std::string label_;
    int shown_ = -1;
};

}  // namespace plattmix::cli
