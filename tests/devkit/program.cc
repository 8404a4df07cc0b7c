// A subprocess on the test's loop.
#include "program.h"

#include <gtest/gtest.h>

namespace morvik::devkit::testing {
namespace {

GOwned<GSubprocess> spawn(const std::vector<std::string>& command) {
  std::vector<const char*> words;
  for (const std::string& word : command) words.push_back(word.c_str());
  words.push_back(nullptr);
  constexpr auto kOutputsTogether =
      static_cast<GSubprocessFlags>(G_SUBPROCESS_FLAGS_STDIN_PIPE | G_SUBPROCESS_FLAGS_STDOUT_PIPE |
                                    G_SUBPROCESS_FLAGS_STDERR_MERGE);
  GErrorOwned error;
  GOwned<GSubprocess> process(g_subprocess_newv(words.data(), kOutputsTogether, error.out()));
  EXPECT_TRUE(process) << error.text();
  return process;
}

}  // namespace

Program::Program(Loop& loop, std::vector<std::string> command)
    : loop_(loop), process_(spawn(command)) {
  read();
}

Program::~Program() {
  g_subprocess_force_exit(process_.get());
  EXPECT_TRUE(loop_.runUntil([this] { return outputEnded_; })) << "output is still open";
  g_subprocess_wait(process_.get(), nullptr, nullptr);
}

void Program::read() {
  g_input_stream_read_async(g_subprocess_get_stdout_pipe(process_.get()), buffer_.data(),
                            buffer_.size(), G_PRIORITY_DEFAULT, nullptr, onRead, this);
}

void Program::onRead(GObject* stream, GAsyncResult* result, void* program) {
  auto* self = static_cast<Program*>(program);
  const gssize count = g_input_stream_read_finish(G_INPUT_STREAM(stream), result, nullptr);
  self->outputEnded_ = count <= 0;
  if (self->outputEnded_) return;
  self->output_.append(self->buffer_.data(), static_cast<std::size_t>(count));
  self->read();
}

std::string Program::waitFor(const std::string& text) {
  const bool said =
      loop_.runUntil([&] { return output_.find(text) != std::string::npos || outputEnded_; });
  EXPECT_TRUE(said && output_.find(text) != std::string::npos)
      << "never said: " << text << "\nbut:\n"
      << output_;
  return output_;
}

void Program::say(const std::string& text) {
  EXPECT_TRUE(g_output_stream_write_all(g_subprocess_get_stdin_pipe(process_.get()), text.data(),
                                        text.size(), nullptr, nullptr, nullptr));
}

void Program::endInput() {
  g_output_stream_close(g_subprocess_get_stdin_pipe(process_.get()), nullptr, nullptr);
}

int Program::waitForEnd() {
  EXPECT_TRUE(loop_.runUntil([this] { return outputEnded_; })) << output_;
  if (!outputEnded_) return -1;
  g_subprocess_wait(process_.get(), nullptr, nullptr);
  return g_subprocess_get_if_exited(process_.get()) != FALSE
             ? g_subprocess_get_exit_status(process_.get())
             : -1;
}

Outcome run(std::vector<std::string> command) {
  Loop loop;
  Program program(loop, std::move(command));
  program.endInput();
  const int status = program.waitForEnd();
  return {status, program.output()};
}

}  // namespace morvik::devkit::testing
