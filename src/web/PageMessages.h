#pragma once

#include "async/Scope.h"
#include "base/Log.h"
#include "web/ScriptMessageRouter.h"
#include "web/page/ScriptMessageFields.h"

#include <memory>
#include <string>

namespace ondrel::platform {
struct ScriptMessage;
} // namespace ondrel::platform

namespace ondrel::web {

class LetterHandOver;
class PageOpener;
class WindowViewModel;
struct WebServices;

// What the page scripts of one tab tell the program: those messages that belong to the tab are handled here,
// those of features by whom the router knows. Main thread only.
class PageMessages {
 public:
  // The references outlive it.
  PageMessages(std::weak_ptr<WindowViewModel> viewModel, const WebServices& services, PageOpener& opener,
               LetterHandOver& letter);

  void receive(const platform::ScriptMessage& message);

 private:
  using Fields = ScriptMessageFields;
  struct Route {
    std::string_view type;
    Trust trust;
    void (PageMessages::*handle)(const Fields& fields);
  };
  static const Route routes[];

  void titleChange(const Fields& fields);
  void mouseover(const Fields& fields);
  void print(const Fields& fields);
  void composeReady(const Fields& fields);
  void compose(const Fields& fields);
  void sendClicked(const Fields& fields);
  void discardClicked(const Fields& fields);
  void discardUndone(const Fields& fields);
  void writingChanged(const Fields& fields);
  void consoleLog(const Fields& fields);
  void filesAutoShare(const Fields& fields);

  async::Task<void> printWithPanel();

  const std::weak_ptr<WindowViewModel> viewModel_;
  const WebServices& services_;
  PageOpener& opener_;
  LetterHandOver& letter_;
  const base::Logger logger_{"script"};
  async::TaskHandle printTask_;
  async::Scope scope_;
};

} // namespace ondrel::web
