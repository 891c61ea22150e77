#include "PfUiPages.h"

#include <algorithm>

namespace {
std::vector<PfUiPages::Page>& pages()
{
    static std::vector<PfUiPages::Page> all;
    return all;
}
} // namespace

void PfUiPages::Register(const Page& page)
{
    Unregister(page.id);
    pages().push_back(page);
}

void PfUiPages::Unregister(const QString& id)
{
    auto& all = pages();
    all.erase(std::remove_if(all.begin(), all.end(), [&id](const Page& page) { return page.id == id; }), all.end());
}

const std::vector<PfUiPages::Page>& PfUiPages::Pages() { return pages(); }
