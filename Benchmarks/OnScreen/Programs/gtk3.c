/* GTK 3: an undecorated white window and a GLib timeout. */
#include <gtk/gtk.h>

#include "Benchmarks/OnScreen/Programs/stamps.h"

static Arguments arguments;

static gboolean tick(gpointer data) {
  stamp_tick();
  if (stamp_tick_count >= arguments.tenths) {
    stamp_down = stamp_now();
    gtk_widget_destroy(GTK_WIDGET(data));
    gtk_main_quit();
    return G_SOURCE_REMOVE;
  }
  return G_SOURCE_CONTINUE;
}

static gboolean draw(GtkWidget* widget, cairo_t* cairo, gpointer data) {
  (void)widget;
  (void)data;
  cairo_set_source_rgb(cairo, 1, 1, 1);
  cairo_paint(cairo);
  return TRUE;
}

int main(int argc, char** argv) {
  GtkWidget* window;
  arguments = arguments_of(argc, argv);
  gtk_init(NULL, NULL);
  stamp_called = stamp_now();
  window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  gtk_window_set_decorated(GTK_WINDOW(window), FALSE);
  gtk_window_set_type_hint(GTK_WINDOW(window), GDK_WINDOW_TYPE_HINT_SPLASHSCREEN);
  gtk_window_set_default_size(GTK_WINDOW(window), arguments.width, arguments.height);
  gtk_widget_set_app_paintable(window, TRUE);
  g_signal_connect(window, "draw", G_CALLBACK(draw), NULL);
  gtk_window_move(GTK_WINDOW(window), arguments.x, arguments.y);
  gtk_widget_show(window);
  stamp_returned = stamp_now();
  g_timeout_add(100, tick, window);
  gtk_main();
  while (gtk_events_pending()) {
    gtk_main_iteration();
  }
  stamps_print();
  return 0;
}
