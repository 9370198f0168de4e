<?xml version="1.0" encoding="UTF-8"?>
<!-- Shows an XML result document as a page. -->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
  <xsl:output method="html" encoding="UTF-8" indent="no"/>

  <xsl:template match="/Mendrake">
    <html lang="en">
      <head>
        <title>Results</title>
        <style>
          body { font-family: "Courier New", monospace; font-size: 0.8rem; color-scheme: light dark; }
          pre { margin: 0; font: inherit; overflow-x: auto; }
          h1 { font-size: 1.3rem; }
          section { border-left: 3px solid #1a5fb4; padding-left: 0.6em; }
          cite { display: block; white-space: normal; margin: 0.3em 0; }
        </style>
      </head>
      <body>
        <xsl:apply-templates select="*"/>
      </body>
    </html>
  </xsl:template>

  <xsl:template match="header">
    <h1><xsl:value-of select="normalize-space(.)"/></h1>
  </xsl:template>

  <xsl:template match="data">
    <xsl:if test="normalize-space(.)">
      <pre><xsl:value-of select="."/></pre>
    </xsl:if>
  </xsl:template>

  <xsl:template match="A">
    <a id="{@NAME}"></a>
  </xsl:template>

  <xsl:template match="Reference">
    <cite><xsl:value-of select="."/></cite>
  </xsl:template>

  <!-- A table, or the block that opens a run: its attributes say what and when. -->
  <xsl:template match="Mendrake/*[@time]">
    <section title="{local-name()} {@samp} {@time}">
      <pre><xsl:value-of select="."/></pre>
    </section>
  </xsl:template>
</xsl:stylesheet>
