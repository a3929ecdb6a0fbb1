#include "tools/qx/carousel/GalleryPage.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "QXExtensionSDK/Version.h"
#include "QXPlatform/foundation/Markup.h"
#include "tools/qx/Printable.h"
#include "tools/qx/PushSize.h"
#include "tools/qx/carousel/GalleryStyle.h"

namespace qx {

namespace {

using QXPlatform::Value;

std::string markup(std::string_view text) {
  return QXPlatform::escapedMarkup(printable(text));
}

std::string text(const Value& value) {
  return std::string(value.string().value_or(""));
}

// What comes from a payload reads in its own direction.
std::string element(const std::string& name, const std::string& cssClass, const std::string& content) {
  return "<" + name + " class=\"" + cssClass + "\" dir=\"auto\">" + markup(content) + "</" + name + ">";
}

std::string counted(std::size_t count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::size_t errorsOf(const GalleryPush& push) {
  return static_cast<std::size_t>(
      std::ranges::count_if(push.findings, [](const auto& each) { return each.finding.isError(); }));
}

std::string chip(const std::string& kind, const std::string& content) {
  return "<li class=\"chip " + kind + "\">" + content + "</li>";
}

std::string verdictChips(std::size_t errors, std::size_t warnings) {
  std::string chips;
  if (errors > 0) chips += chip("error", counted(errors, "error"));
  if (warnings > 0) chips += chip("warning", counted(warnings, "warning"));
  return chips.empty() ? chip("good", "no findings") : chips;
}

std::string verdictOf(const GalleryPush& push) {
  return verdictChips(errorsOf(push), push.findings.size() - errorsOf(push));
}

std::string titleOf(const GalleryPush& push) {
  for (const char* key : {"title", "body"}) {
    std::string title = text(push.content[key]);
    if (!title.empty()) return title;
  }
  return push.place;
}

std::string contents(const std::vector<GalleryPush>& pushes) {
  std::string list;
  for (std::size_t i = 0; i < pushes.size(); ++i) {
    const std::string title = titleOf(pushes[i]);
    list += "<li><a href=\"#push-" + std::to_string(i + 1) + "\">" + element("span", "name", title) +
            (title == pushes[i].place ? "" : element("span", "file", pushes[i].place)) +
            "</a><ul class=\"chips\">" + verdictOf(pushes[i]) + "</ul></li>\n";
  }
  return "<nav aria-label=\"Pushes\"><ol>\n" + list + "</ol></nav>\n";
}

std::string pageHeader(const std::vector<GalleryPush>& pushes) {
  std::size_t panels = 0;
  std::size_t errors = 0;
  std::size_t findings = 0;
  for (const GalleryPush& push : pushes) {
    panels += push.panels.size();
    errors += errorsOf(push);
    findings += push.findings.size();
  }
  const std::string title = pushes.size() == 1 ? "Push for approval" : "Pushes for approval";
  return "<header class=\"page\">\n<p class=\"kicker\">Carousel gallery</p>\n<h1>" + title +
         "</h1>\n<ul class=\"chips\">" +
         chip("plain", std::to_string(pushes.size()) + (pushes.size() == 1 ? " push" : " pushes")) +
         chip("plain", counted(panels, "panel")) + verdictChips(errors, findings - errors) + "</ul>\n" +
         (pushes.size() > 1 ? contents(pushes) : "") + "</header>\n";
}

std::string findingItem(const LocatedFinding& located) {
  const Finding& finding = located.finding;
  const std::string kind = finding.isError() ? "error" : "warning";
  return "<li class=\"" + kind + "\"><p><span class=\"tag\">" + (finding.isError() ? "Error" : "Warning") +
         "</span> <code>" + markup(finding.at.empty() ? "the push" : finding.at) +
         "</code> <span class=\"line\">line " + std::to_string(located.position.line) + ", column " +
         std::to_string(located.position.column) + "</span></p>" + element("p", "message", finding.message) +
         (finding.hint.empty() ? "" : element("p", "hint", finding.hint)) + "</li>\n";
}

std::string findingsOf(const GalleryPush& push) {
  std::string list;
  for (const LocatedFinding& located : push.findings) list += findingItem(located);
  if (list.empty()) return "<p class=\"none\">Nothing that a device would refuse, ignore or replace.</p>\n";
  return "<ul class=\"findings\">\n" + list + "</ul>\n";
}

// What part of the limit is used.
std::string bar(std::size_t size) {
  const std::size_t limit = mostPushBytes(PushLimit::apns);
  const std::size_t percent = std::min<std::size_t>(100, size * 100 / limit);
  return "<td class=\"bar" + std::string(size > limit ? " over" : "") +
         "\"><div><span style=\"width:" + std::to_string(percent) + "%\"></span></div></td>";
}

std::string sizesOf(const GalleryPush& push) {
  std::string rows;
  for (const auto& [key, size] : push.sizes) {
    rows += "<tr><th scope=\"row\"><code>" + markup(key) + "</code></th>" + bar(size) + "<td>" +
            std::to_string(size) + "</td></tr>\n";
  }
  return "<table><thead><tr><th scope=\"col\">Key</th><th scope=\"col\"><span class=\"unseen\">Share of the "
         "limit</span></th><th scope=\"col\">Bytes</th></tr></thead>\n<tbody>\n" +
         rows + "</tbody>\n<tfoot><tr><th scope=\"row\">Whole push</th>" + bar(push.size) + "<td>" +
         std::to_string(push.size) + " <span class=\"of\">of " +
         std::to_string(mostPushBytes(PushLimit::apns)) + "</span></td></tr></tfoot></table>\n";
}

std::string describe(const GalleryLook& look) {
  return std::string(look.isDark ? "dark" : "light") + ", " +
         (look.isRightToLeft ? "right to left" : "left to right") + ", " + std::to_string(look.width) +
         " points wide" +
         (look.textPercent == 100 ? "" : ", text at " + std::to_string(look.textPercent) + " percent");
}

std::string figure(const GalleryPicture& picture, const std::string& subject) {
  const GalleryLook& look = picture.look;
  return "<figure><img width=\"" + std::to_string(look.width) + "\" height=\"" +
         std::to_string(picture.height) + "\" alt=\"" + markup(subject + " (" + describe(look) + ")") +
         "\" src=\"data:image/webp;base64," + picture.image.toBase64().toStdString() + "\"><figcaption>" +
         (look.isDark ? "Dark" : "Light") + " · " + std::to_string(look.width) +
         " pt</figcaption></figure>\n";
}

std::string rowTitle(const GalleryLook& look) {
  if (look.textPercent != 100) return "Text at " + std::to_string(look.textPercent) + " %";
  return look.isRightToLeft ? "Right to left" : "Left to right";
}

std::string rowsOf(const GalleryPanel& panel, const std::string& subject) {
  std::string rows;
  std::string current;
  for (const GalleryPicture& picture : panel.pictures) {
    const std::string title = rowTitle(picture.look);
    if (title != current)
      rows += (current.empty() ? "" : "</div>\n") + ("<h4>" + title) + "</h4>\n<div class=\"row\">\n";
    current = title;
    rows += figure(picture, subject);
  }
  return rows.empty() ? rows : rows + "</div>\n";
}

std::string fact(const std::string& name, const std::string& content) {
  return content.empty() ? "" : "<div><dt>" + name + "</dt>" + element("dd", "", content) + "</div>";
}

std::string actionOf(const Value& panel) {
  constexpr std::array<std::pair<std::string_view, std::string_view>, 3> kLinks{
      {{"openDeepLink", "Deep link "}, {"openWebUrl", "Web page "}, {"openCloudPage", "Cloud page "}}};
  const std::string kind = text(panel["action"]["kind"]);
  for (const auto& [link, words] : kLinks) {
    if (kind == link) return std::string(words) + text(panel["action"]["url"]);
  }
  return kind.empty() ? "Opens the app, and is not recorded" : "Opens the app";
}

std::string panelSection(const GalleryPanel& panel, std::size_t index, std::size_t count) {
  const Value state = panel.state;
  const std::string title = text(state["title"]["text"]);
  const std::string altText = text(state["altText"]["text"]);
  const std::string subject = "Panel " + std::to_string(index + 1) + " of " + std::to_string(count) +
                              (title.empty() ? "" : ": " + title) + (altText.empty() ? "" : ", " + altText);
  const bool isFailed = state["imageState"].string() == "failed";
  return "<section class=\"panel\">\n<h3><span class=\"number\">" + std::to_string(index + 1) + "</span>" +
         (title.empty() ? "<span class=\"untitled\">without a title</span>"
                        : element("span", "name", title)) +
         (isFailed ? "<span class=\"chip error\">image not loaded</span>" : "") + "</h3>\n<dl>" +
         fact("Subtitle", text(state["subTitle"]["text"])) + fact("Alternative text", altText) +
         fact("Tap", actionOf(state)) + fact("Image", text(state["url"])) + "</dl>\n" +
         rowsOf(panel, subject) + "</section>\n";
}

std::string panelsOf(const GalleryPush& push) {
  if (push.panels.empty()) {
    return "<p class=\"collapsed\">No carousel is shown: the notification keeps its ordinary look.</p>\n";
  }
  std::string sections;
  for (std::size_t i = 0; i < push.panels.size(); ++i) {
    sections += panelSection(push.panels[i], i, push.panels.size());
  }
  return sections;
}

std::string article(const GalleryPush& push, std::size_t number) {
  const std::string title = titleOf(push);
  const std::string body = text(push.content["body"]);
  return "<article id=\"push-" + std::to_string(number) + "\">\n<header>" +
         (title == push.place ? "" : element("p", "file", push.place)) + element("h2", "name", title) +
         (body.empty() || body == title ? "" : element("p", "body", body)) + "<ul class=\"chips\">" +
         verdictOf(push) + "</ul></header>\n<div class=\"facts\">\n<section><h3>Findings</h3>\n" +
         findingsOf(push) + "</section>\n<section><h3>Size per key</h3>\n" + sizesOf(push) +
         "</section>\n</div>\n" + panelsOf(push) + "</article>\n";
}

}  // namespace

std::string galleryPage(const std::vector<GalleryPush>& pushes) {
  std::string articles;
  for (std::size_t i = 0; i < pushes.size(); ++i) articles += article(pushes[i], i + 1);
  const std::string title =
      pushes.size() == 1 ? markup(titleOf(pushes.front())) + " – carousel gallery" : "Carousel gallery";
  return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
         "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; img-src data:; "
         "style-src "
         "'unsafe-inline'\">\n<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
         "<meta name=\"color-scheme\" content=\"light dark\">\n<title>" +
         title + "</title>\n<style>" + kGalleryStyle + "</style>\n</head>\n<body>\n" + pageHeader(pushes) +
         "<main>\n" + articles +
         "</main>\n<footer><dl class=\"approval\"><div><dt>Approved by</dt><dd></dd></div><div><dt>Date</dt>"
         "<dd></dd></div><div><dt>Remarks</dt><dd></dd></div></dl><p>Drawn by qx " +
         reinterpret_cast<const char*>(QXExtensionSDK::QXExtensionSDKVersionString) +
         " as the content extension draws it.</p></footer>\n</body>\n</html>\n";
}

}  // namespace qx
