#include "platform/linux/packages/TransactionSignals.h"

#include "base/Text.h"
#include "base/Translation.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace ondrel::platform::packages {

namespace {

using Kind = UpdateFault::Kind;
using Step = UpdateProgress::Step;

// The backends put the severity of an update beside the kind of entry.
constexpr std::uint32_t kindMask = 0xFFFF;

enum Exit : std::uint32_t { success = 1, cancelled = 3, keyRequired = 4, needUntrusted = 8 };

// PkStatusEnum.
Step stepOf(std::uint32_t status) {
  switch (status) {
  case 31:
    return Step::askingUser;
  case 8:
    return Step::downloading;
  case 6: // removes, installs, updates, cleans up, commits, copies, runs hooks
  case 9:
  case 10:
  case 11:
  case 16:
  case 35:
  case 36:
    return Step::installing;
  default:
    return Step::waiting;
  }
}

// A source that can't be read has one code for all reasons.
Kind sourceFault(const std::string& text) {
  constexpr std::array<std::string_view, 5> ofSignatures = {"signed", "signature", "NO_PUBKEY", "EXPKEYSIG",
                                                            "BADSIG"};
  const bool isUntrusted =
      std::ranges::any_of(ofSignatures, [&](auto word) { return text.find(word) != text.npos; });
  return isUntrusted ? Kind::untrusted : Kind::unreachable;
}

Kind kindOf(std::uint32_t code, const std::string& text) {
  switch (code) {
  case 2:
    return Kind::noNetwork;
  case 10: // download failed, source not available, no more mirrors, sources can't be fetched
  case 37:
  case 43:
  case 64:
    return sourceFault(text);
  case 5: // GPG failure, bad or missing signature, unsigned source
  case 30:
  case 31:
  case 50:
  case 51:
    return Kind::untrusted;
  case 48:
    return Kind::refused;
  case 17:
    return Kind::cancelled;
  case 26: // no lock, locked
  case 67:
    return Kind::busy;
  case 6: // unknown id, not found, installed already, nothing to update
  case 8:
  case 9:
  case 27:
  case 41:
  case 49:
    return Kind::gone;
  case 13: // dependencies, conflicts, blocked
  case 35:
  case 36:
  case 39:
    return Kind::conflicts;
  case 46:
    return Kind::noSpace;
  default:
    return Kind::other;
  }
}

bool isOfType(GVariant* value, const char* type) {
  return g_variant_is_of_type(value, G_VARIANT_TYPE(type)) != FALSE;
}

std::string textAt(GVariant* tuple, gsize index) {
  const glib::Owned<GVariant> child(g_variant_get_child_value(tuple, index));
  return g_variant_get_string(child.get(), nullptr);
}

constexpr const char* packageType = "(uss)";
constexpr const char* detailType = "(sasasasasasussuss)";
constexpr gsize updateTextField = 7;

template <class Visit>
void forEach(GVariant* list, Visit visit) {
  for (gsize i = 0; i < g_variant_n_children(list); ++i)
    visit(glib::Owned<GVariant>(g_variant_get_child_value(list, i)).get());
}

} // namespace

UpdateFault faultOf(std::uint32_t code, const std::string& text) {
  // TRANSLATORS: {0} is a number, {1} a text of the package service
  return {kindOf(code, text), base::shortDisplayLine(base::trFormat("error {0}: {1}", code, text))};
}

void TransactionSignals::take(const std::string& member, GVariant* arguments) {
  const auto isTold = [&](const char* name, const char* type) {
    return member == name && isOfType(arguments, type);
  };
  const auto takeDetail = [this](GVariant* detail) {
    result_.details.push_back({textAt(detail, 0), textAt(detail, updateTextField)});
  };
  const auto first = [&] { return glib::Owned<GVariant>(g_variant_get_child_value(arguments, 0)); };
  if (isTold("Package", packageType)) {
    takePackage(arguments);
  } else if (isTold("Packages", "(a(uss))")) {
    forEach(first().get(), [this](GVariant* package) { takePackage(package); });
  } else if (isTold("UpdateDetail", detailType)) {
    takeDetail(arguments);
  } else if (isTold("UpdateDetails", "(a(sasasasasasussuss))")) {
    forEach(first().get(), takeDetail);
  } else if (isTold("ErrorCode", "(us)")) {
    if (!fault_) // the first one is the reason
      fault_ = faultOf(g_variant_get_uint32(first().get()), textAt(arguments, 1));
  } else if (isTold("Finished", "(uu)")) {
    finish(g_variant_get_uint32(first().get()));
  } else if (member == "Destroy") {
    fail({Kind::other, base::tr("the transaction has gone")});
  }
}

void TransactionSignals::takePackage(GVariant* package) {
  const glib::Owned<GVariant> info(g_variant_get_child_value(package, 0));
  const auto kind = static_cast<PackageInfo>(g_variant_get_uint32(info.get()) & kindMask);
  result_.packages.push_back({kind, textAt(package, 1)});
}

void TransactionSignals::finish(std::uint32_t exit) {
  hasFinished_ = true;
  if (fault_)
    return fail(*fault_);
  switch (exit) {
  case Exit::success:
    resolver_.resolve(std::move(result_));
    return;
  case Exit::cancelled:
    return fail({Kind::cancelled, "cancelled"});
  case Exit::keyRequired:
  case Exit::needUntrusted:
    return fail({Kind::untrusted, "a key is missing"});
  default:
    // TRANSLATORS: the service's number for what happened
    return fail({Kind::other, base::trFormat("ended with {}", exit)});
  }
}

void TransactionSignals::fail(UpdateFault fault) {
  resolver_.resolve(std::unexpected(std::move(fault)));
}

void TransactionSignals::takeProperties(GVariant* arguments) {
  if (!progress_ || !isOfType(arguments, "(sa{sv}as)"))
    return;
  const glib::Owned<GVariant> changed(g_variant_get_child_value(arguments, 1));
  auto progress = told_;
  guint32 value = 0;
  if (g_variant_lookup(changed.get(), "Status", "u", &value)) {
    const auto step = stepOf(value);
    // Between two steps it says that it waits or reads its lists.
    if (step != Step::waiting || told_.step == Step::askingUser)
      progress = {step, step == told_.step ? told_.percentage : std::nullopt};
  }
  if (g_variant_lookup(changed.get(), "Percentage", "u", &value))
    progress.percentage = value <= 100 ? std::optional(static_cast<int>(value)) : std::nullopt;
  if (progress.step == Step::waiting || progress.step == Step::askingUser)
    progress.percentage = std::nullopt; // of something else
  if (progress == told_)
    return;
  told_ = progress;
  progress_(progress);
}

} // namespace ondrel::platform::packages
