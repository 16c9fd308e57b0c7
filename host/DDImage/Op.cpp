// SPDX-License-Identifier: BSD-3-Clause
#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <DDImage/Iop.h>

namespace DD::Image {

// ---- classes -----------------------------------------------------------------------------------

// In the order of announcement. A function, as plug-ins announce theirs during static construction.
static std::vector<const Op::Description*>& descriptions() {
    static std::vector<const Op::Description*> all;
    return all;
}

void Op::Description::add() {
    descriptions().push_back(this);
}

Op::Description::~Description() {
    std::vector<const Description*>& all = descriptions();
    all.erase(std::remove(all.begin(), all.end(), this), all.end());
}

Op* Op::Description::constructor(Node* node) const {
    if (make_op)
        return make_op(node);
    return make_iop(node);
}

const Op::Description* Op::Description::find(const char* name) {
    for (const Description* const description : descriptions())
        if (std::strcmp(description->name, name) == 0)
            return description;
    return nullptr;
}

// ---- knobs and inputs --------------------------------------------------------------------------

Op::Op(Node* node) : node_(node) {}

Op::~Op() {}

void Op::knobs(Knob_Callback) {}

int Op::knob_changed(Knob*) {
    return 0;
}

int Op::knob_change_finished(Knob*, bool) {
    return 0;
}

void Op::inputs(int count) {
    inputs_.resize(std::size_t(std::max(count, 0)));
}

void Op::clear_inputs() {
    for (std::vector<Op*>& copies : inputs_)
        copies.clear();
    if (wrapped)
        wrapped->clear_inputs();
}

Op* Op::input(int n, int m) const {
    if (n < 0 || m < 0 || n >= inputs())
        return nullptr;
    const std::vector<Op*>& copies = inputs_[std::size_t(n)];
    return std::size_t(m) < copies.size() ? copies[std::size_t(m)] : nullptr;
}

bool Op::test_input(int, Op*) const {
    return true;
}

Op* Op::default_input(int) const {
    return nullptr;
}

const char* Op::input_label(int n, char* buffer) const {
    if (inputs() < 2)
        return "";
    std::sprintf(buffer, "%d", n + 1);
    return buffer;
}

float Op::uses_input(int) const {
    return 1;
}

int Op::split_input(int) const {
    return 1;
}

const OutputContext& Op::inputContext(int, int, OutputContext&) const {
    return context_;
}

void Op::set_input(int, Op* op, int n, int m) {
    if (n >= inputs())
        inputs(n + 1);
    std::vector<Op*>& copies = inputs_[std::size_t(n)];
    if (m == 0)
        copies.clear(); // there may be fewer than last time
    copies.resize(std::max(copies.size(), std::size_t(m) + 1));
    copies[std::size_t(m)] = op;
}

// ---- the cycle ---------------------------------------------------------------------------------

void Op::setOutputContext(const OutputContext& context) {
    context_ = context;
}

void Op::append(Hash&) {}

// A wrapper and its op have one hash.
void Op::set_hash(const Hash& hash) {
    if (hash == hash_)
        return;
    for (Op* op = this; op; op = op->wrapped)
        op->hash_ = hash;
    invalidate();
}

void Op::validate(bool for_real) {
    const Validity wanted = for_real ? Validity::for_real : Validity::roughly;
    if (valid_ >= wanted)
        return;
    _validate(for_real);
    valid_ = wanted;
}

void Op::invalidate() {
    // From the outermost wrapper to the innermost op.
    for (Op* op = &outermost(); op; op = op->wrapped) {
        op->valid_ = Validity::none;
        {
            const std::lock_guard<std::mutex> guard(op->error_lock);
            op->error_.clear();
        }
        op->_invalidate();
    }
}

void Op::open() {
    if (opened_)
        return;
    // Inputs first.
    for (const std::vector<Op*>& copies : inputs_)
        for (Op* const copy : copies)
            if (copy)
                copy->open();
    try {
        _open();
    } catch (...) {
        close_inputs();
        throw;
    }
    opened_ = true;
}

void Op::close() {
    if (!opened_)
        return;
    opened_ = false;
    _close();
    close_inputs();
}

void Op::close_inputs() {
    for (const std::vector<Op*>& copies : inputs_)
        for (Op* const copy : copies)
            if (copy)
                copy->close();
}

void Op::_validate(bool) {}
void Op::_open() {}
void Op::_close() {}
void Op::_invalidate() {}

// ---- stopping and failing ----------------------------------------------------------------------

bool Op::aborted() const {
    const std::atomic<bool>* const flag = outermost().abort_switch;
    return flag && flag->load(std::memory_order_relaxed);
}

void Op::abort() const {
    if (std::atomic<bool>* const flag = outermost().abort_switch)
        flag->store(true, std::memory_order_relaxed);
}

[[gnu::format(printf, 1, 0)]] static std::string formatted(const char* format, va_list args) {
    // Once to measure, once to write.
    va_list again;
    va_copy(again, args);
    std::string text(std::size_t(std::max(std::vsnprintf(nullptr, 0, format, args), 0)) + 1, '\0');
    std::vsnprintf(text.data(), text.size(), format, again);
    va_end(again);
    text.pop_back(); // the NUL
    return text;
}

void Op::error(const char* format, ...) {
    va_list args;
    va_start(args, format);
    const std::string message = formatted(format, args);
    va_end(args);

    // The wrapper is the one that the host knows.
    Op& failed = outermost();
    const std::lock_guard<std::mutex> guard(failed.error_lock);
    failed.error_ = message;
    failed.errors_++;
}

bool Op::has_error() const {
    return !error_message().empty();
}

std::string Op::error_message() const {
    const std::lock_guard<std::mutex> guard(error_lock);
    return error_;
}

int Op::error_count() const {
    const std::lock_guard<std::mutex> guard(error_lock);
    return errors_;
}

Op* Op::error_op() {
    std::set<const Op*> seen;
    return error_op(seen);
}

// `seen`: an op may feed others in several ways.
Op* Op::error_op(std::set<const Op*>& seen) {
    if (has_error())
        return this;
    for (const std::vector<Op*>& copies : inputs_)
        for (Op* const copy : copies)
            if (copy && seen.insert(copy).second)
                if (Op* const failed = copy->error_op(seen))
                    return failed;
    return nullptr;
}

// ---- texts that knobs store --------------------------------------------------------------------

// The same pointer as before, for as long as the text stays the same.
const char* Op::keep_text(const void* place, const std::string& text) {
    for (auto& [kept_place, kept] : texts) {
        if (kept_place != place)
            continue;
        if (*kept != text)
            kept = std::make_unique<std::string>(text);
        return kept->c_str();
    }
    texts.emplace_back(place, std::make_unique<std::string>(text));
    return texts.back().second->c_str();
}

} // namespace DD::Image
