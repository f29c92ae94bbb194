#include "platform/text/Truncation.h"

#include <algorithm>
#include <memory>
#include <vector>

namespace kqu::platform {

namespace {
constexpr std::string_view ellipsis = "\xE2\x80\xA6";

/// One end of the text that is long enough to fill the line by itself, cut into clusters.
class TextEnd {
  public:
    TextEnd(TextLayout& layout, std::string_view part) : source_(part), plain_(part) {
        for (const std::size_t cluster : layout.Clusters(plain_))
            bounds_.push_back(plain_.places[cluster]);
    }

    [[nodiscard]] std::string_view Source() const { return source_; }
    [[nodiscard]] std::size_t Clusters() const { return bounds_.size() - 1; }

    // The first or the last so many clusters, as they are in the source and as they are laid out.
    [[nodiscard]] std::string_view First(std::size_t count) const {
        return source_.substr(0, bounds_[count].inSource);
    }
    [[nodiscard]] std::string_view PlainFirst(std::size_t count) const {
        return std::string_view(plain_.utf8).substr(0, bounds_[count].inLine);
    }
    [[nodiscard]] std::string_view Last(std::size_t count) const {
        return source_.substr(bounds_[Clusters() - count].inSource);
    }
    [[nodiscard]] std::string_view PlainLast(std::size_t count) const {
        return std::string_view(plain_.utf8).substr(bounds_[Clusters() - count].inLine);
    }

  private:
    std::string_view source_;
    PlainText plain_;
    std::vector<PlainText::Place> bounds_;
};

/// How much of a text is kept: so many clusters at its start and at its end.
struct Kept {
    std::size_t first = 0;
    std::size_t last = 0;
};

/// Bytes of each end that are looked at: more than fits, so that the text between them never
/// matters.
std::size_t Share(std::string_view text, int limit) {
    return TextLayout::Enough(text, limit).size();
}

class Shortening {
  public:
    Shortening(TextLayout& layout, std::string_view text, int size, int limit, Giving giving)
        : layout_(layout),
          size_(size),
          limit_(limit),
          giving_(giving),
          whole_(text),
          start_(std::make_shared<TextEnd>(layout, StartOf(text, Share(text, limit)))),
          end_(start_->Source() == text
                   ? start_
                   : std::make_shared<TextEnd>(layout, EndOf(text, Share(text, limit)))) {}

    /// `startWidth` is that of the part which stands for the text's start.
    [[nodiscard]] std::string Result(double startWidth) {
        const double ellipsisWidth = layout_.Width(ellipsis, size_);
        if (ellipsisWidth > limit_)
            return {};
        const Kept kept = Widest(MostThatFit(ellipsisWidth, startWidth));
        return std::string(start_->First(kept.first))
            .append(ellipsis)
            .append(end_->Last(kept.last));
    }

  private:
    [[nodiscard]] Kept Balanced(std::size_t count) const {
        return giving_ == Giving::End ? Kept{count, 0} : Kept{count - count / 2, count / 2};
    }

    /// Something has to be taken out, or it would not be a shortened text.
    [[nodiscard]] bool IsShorter(Kept kept) const {
        return kept.first <= start_->Clusters() && kept.last <= end_->Clusters() &&
               start_->First(kept.first).size() + end_->Last(kept.last).size() < whole_.size();
    }

    [[nodiscard]] double WidthOf(Kept kept) {
        line_.assign(start_->PlainFirst(kept.first));
        line_.append(ellipsis).append(end_->PlainLast(kept.last));
        return layout_.WidthOnce(line_, size_);
    }

    [[nodiscard]] bool Fits(Kept kept) { return IsShorter(kept) && WidthOf(kept) <= limit_; }

    /// The largest number of clusters, evenly from both ends, that fits. None does, all of them
    /// don't. Guesses by width are mostly right; where they are not, halving takes over.
    [[nodiscard]] std::size_t MostThatFit(double fitWidth, double tooWide) {
        constexpr int guesses = 6;
        std::size_t fits = 0;
        std::size_t tooMany = start_->Clusters() + 1;
        for (int step = 0; tooMany - fits > 1; ++step) {
            std::size_t middle = fits + (tooMany - fits) / 2;
            if (step < guesses && tooWide > fitWidth)
                middle = Between(fits, tooMany, (limit_ - fitWidth) / (tooWide - fitWidth));
            const Kept kept = Balanced(middle);
            const double width = IsShorter(kept) ? WidthOf(kept) : tooWide + 1;
            if (width <= limit_) {
                fits = middle;
                fitWidth = width;
            } else {
                tooMany = middle;
                tooWide = width;
            }
        }
        return fits;
    }

    static std::size_t Between(std::size_t low, std::size_t high, double share) {
        const double distance = static_cast<double>(high - low) * std::clamp(share, 0.0, 1.0);
        return std::clamp(low + static_cast<std::size_t>(distance), low + 1, high - 1);
    }

    /// One cluster more does not fit evenly, but it may on the other side.
    [[nodiscard]] Kept Widest(std::size_t count) {
        Kept kept = Balanced(count);
        if (giving_ == Giving::End)
            return kept;
        // Thin characters on one side end soon; a flood of characters without any width does not.
        constexpr int mostSteps = 64;
        const bool startIsFull = kept.first == kept.last;
        for (int step = 0; step < mostSteps; ++step) {
            const Kept more{kept.first + 1, kept.last};
            const Kept other{kept.first, kept.last + 1};
            if ((step > 0 || !startIsFull) && Fits(more))
                kept = more;
            else if ((step > 0 || startIsFull) && Fits(other))
                kept = other;
            else
                break;
        }
        return kept;
    }

    TextLayout& layout_;
    int size_;
    int limit_;
    Giving giving_;
    std::string_view whole_;
    std::shared_ptr<const TextEnd> start_;
    std::shared_ptr<const TextEnd> end_;
    std::string line_;
};
} // namespace

std::string Truncated(TextLayout& layout, std::string_view text, int size, int limit,
                      Giving giving) {
    if (text.empty())
        return {};
    // What is longer than any line of that width is not measured: characters that take no room
    // could go on for ever.
    const std::string_view start = TextLayout::Enough(text, limit);
    const double startWidth = layout.WidthOnce(PlainText(start).utf8, size);
    if (startWidth <= limit && start.size() == text.size())
        return std::string(text);
    return Shortening(layout, text, size, limit, giving).Result(startWidth);
}

} // namespace kqu::platform
