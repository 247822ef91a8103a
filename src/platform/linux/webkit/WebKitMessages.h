#pragma once

// What the program and its extension in the web process say to each other, as WebKitUserMessages. Frames are
// named by the engine's id. The extension is loaded by the same build of the program, so there is no version
// in it.
namespace ondrel::platform::webkit {

// The extension's initialisation data: the largest body of a script message in bytes, and the handler names.
inline constexpr const char* initializationFormat = "(tas)";

// Extension to program: a call of a handler's postMessage. Handler name, body as JSON (empty for what JSON
// can't express), and of the frame: id, address, origin, whether it is the main one.
inline constexpr const char* scriptMessage = "script-message";
inline constexpr const char* scriptMessageFormat = "(sstssb)";

// Extension to program: a script message was dropped for its size. Handler name and size. Once for each page.
inline constexpr const char* messageTooLarge = "message-too-large";
inline constexpr const char* messageTooLargeFormat = "(st)";

// Extension to program, after a certain amount of script messages: a question without parameters, to which
// any answer means that it may go on. The program answers when it has time for more; until then the extension
// holds what the page posts.
inline constexpr const char* mayGoOn = "may-go-on";

// Extension to program: the page posts more than could be held, and some was dropped. Once for each page.
inline constexpr const char* messagesDropped = "messages-dropped";

// Extension to program: the states that the page has given to its history are too much to be written down.
// Once for each page.
inline constexpr const char* historyTooLarge = "history-too-large";

// Extension to program: the page that is shown has dark text and no background of its own.
inline constexpr const char* pageWantsWhite = "page-wants-white";

// Program to extension: user scripts of the page that the engine doesn't run (see WebKitEngine::makePopup),
// each with its source, whether it runs at the start of a document, and whether in the main frame only. Only
// the first such message of a page counts.
inline constexpr const char* userScripts = "user-scripts";
inline constexpr const char* userScriptsFormat = "a(sbb)";

// Program to extension: run a source text in the page's world of a frame, if that frame still shows a
// document of that origin. Frame id, origin, source.
inline constexpr const char* evaluate = "evaluate";
inline constexpr const char* evaluateFormat = "(tss)";

// The answer to it. The text is JSON for value, a message for exception, else empty.
inline constexpr const char* evaluated = "evaluated";
inline constexpr const char* evaluatedFormat = "(us)";
enum class Evaluated : unsigned { value, exception, unsupportedValue, frameGone };

// Program to extension: nothing. No one takes it, and that the engine says so means that the page has come to
// it, after all that was asked of it before.
inline constexpr const char* areYouThere = "are-you-there";

} // namespace ondrel::platform::webkit
