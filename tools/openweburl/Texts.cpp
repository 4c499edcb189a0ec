// SPDX-License-Identifier: MIT
#include "Texts.h"

const Texts &Texts::in(const QString &language)
{
    static const Texts english{
        {QStringLiteral("This page cannot be shown"),
         QStringLiteral("No answer that can be shown came from this address. Check the connection, "
                        "then try again.")},
        {QStringLiteral("This address was not found"),
         QStringLiteral("Nothing has this address. It may be written wrongly, or the connection "
                        "may be down.")},
        {QStringLiteral("This connection is not safe"),
         QStringLiteral("The server could not prove that this address is its own. Check the date "
                        "of this computer, or tell whoever runs the service.")},
        QStringLiteral("&Try again"),
        QStringLiteral("Trying again…"),
        QStringLiteral("&Close"),
        QStringLiteral("Cu&t"),
        QStringLiteral("&Copy"),
        QStringLiteral("&Paste"),
        QStringLiteral("Select &all")};
    static const Texts chinese{
        {QStringLiteral("无法显示此页面"),
         QStringLiteral("未能从此地址获得可显示的内容。请检查网络连接，然后重试。")},
        {QStringLiteral("找不到此地址"),
         QStringLiteral("没有与此地址对应的内容。地址可能有误，或网络连接已断开。")},
        {QStringLiteral("此连接不安全"),
         QStringLiteral("服务器无法证明此地址属于它。请检查本机日期，或联系服务提供方。")},
        QStringLiteral("重试(&T)"),
        QStringLiteral("正在重试…"),
        QStringLiteral("关闭(&C)"),
        QStringLiteral("剪切(&T)"),
        QStringLiteral("复制(&C)"),
        QStringLiteral("粘贴(&P)"),
        QStringLiteral("全选(&A)")};
    return language.startsWith(QLatin1String("zh"), Qt::CaseInsensitive) ? chinese : english;
}
