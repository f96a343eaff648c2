// SPDX-License-Identifier: BSD-2-Clause
#ifndef KOVANTA_VIEWSTACK_H
#define KOVANTA_VIEWSTACK_H

#include <cstddef>
#include <initializer_list>
#include <utility>
#include <vector>

namespace Ko {

/// @addtogroup images
/// @{

/// The views of an array, the current one last: a container in the manner of std::vector, from and to which it
/// converts.
///
/// A stack of one entry, which nearly all are, needs no memory of its own. So an array can be moved without asking
/// for any, and what a move leaves behind has its one entry again.
template <class View>
class ViewStack {
public:
    /// @cond What std::vector has, with the same meaning.
    using value_type = View;
    using size_type = std::size_t;
    using difference_type = std::ptrdiff_t;
    using reference = View&;
    using const_reference = const View&;
    using iterator = View*;
    using const_iterator = const View*;
    /// @endcond

    /// One entry of zeros.
    ViewStack() noexcept = default;
    /// A copy of the views given.
    ViewStack(std::initializer_list<View> views) { assign(views.begin(), views.size()); }
    /// A copy of the views given.
    ViewStack(const std::vector<View>& views) { assign(views.data(), views.size()); }
    /// @throws std::bad_alloc
    ViewStack(const ViewStack& other) = default;
    /// Leaves @p other with one entry of zeros.
    ViewStack(ViewStack&& other) noexcept { swap(other); }
    /// @throws std::bad_alloc; the stack is then as it was
    ViewStack& operator=(const ViewStack& other) {
        ViewStack copy(other);
        swap(copy);
        return *this;
    }
    /// Leaves @p other with one entry of zeros.
    ViewStack& operator=(ViewStack&& other) noexcept {
        ViewStack taken(std::move(other));
        swap(taken);
        return *this;
    }
    ~ViewStack() = default;

    operator std::vector<View>() const { return std::vector<View>(begin(), end()); }

    /// Leaves one entry. Needs no memory.
    void reset(const View& only) noexcept {
        lone = only;
        count = 1;
    }
    /// @cond
    void swap(ViewStack& other) noexcept {
        std::swap(lone, other.lone);
        std::swap(count, other.count);
        several.swap(other.several);
    }
    void clear() noexcept { count = 0; }
    void push_back(const View& view) {
        if (count == 0)
            lone = view;
        else if (count == 1)
            several = {lone, view};
        else
            several.push_back(view);
        ++count;
    }
    void pop_back() noexcept {
        if (count > 1)
            several.pop_back();
        if (--count == 1)
            lone = several.front();
    }

    std::size_t size() const noexcept { return count; }
    bool empty() const noexcept { return count == 0; }
    View* data() noexcept { return count > 1 ? several.data() : &lone; }
    const View* data() const noexcept { return count > 1 ? several.data() : &lone; }
    View* begin() noexcept { return data(); }
    View* end() noexcept { return data() + count; }
    const View* begin() const noexcept { return data(); }
    const View* end() const noexcept { return data() + count; }
    View& operator[](std::size_t i) noexcept { return data()[i]; }
    const View& operator[](std::size_t i) const noexcept { return data()[i]; }
    View& front() noexcept { return data()[0]; }
    const View& front() const noexcept { return data()[0]; }
    View& back() noexcept { return data()[count - 1]; }
    const View& back() const noexcept { return data()[count - 1]; }
    /// @endcond

private:
    void assign(const View* views, std::size_t n) {
        if (n > 1)
            several.assign(views, views + n);
        else if (n == 1)
            lone = *views;
        count = n;
    }

    View lone{};               // the entry of a stack of one
    std::vector<View> several; // the entries of a deeper one
    std::size_t count = 1;
};

/// @}

} // namespace Ko

#endif
